{ Turns the first page of an image file upright and saves it as a bitmap file: turn scan.tif upright.bmp }
program turn;

{$IFDEF FPC}{$MODE DELPHI}{$ENDIF}
{$APPTYPE CONSOLE}

uses
  Vorel32;

procedure Fail(const What: AnsiString);
var
  Code: Integer;
  Why: array [0..IMG_MESSAGE_BYTES - 1] of AnsiChar;
begin
  Code := ImgError; { some failures of codec modules leave no code }
  if Code = IMG_OK then
    WriteLn(ErrOutput, What, ': damaged or not supported')
  else
    WriteLn(ErrOutput, What, ': ', ImgErrorString(Why, Code));
  Halt(1);
end;

var
  Scan, Upright: TVorelHandle;
  Source, Target: AnsiString;
begin
  if ParamCount <> 2 then
  begin
    WriteLn(ErrOutput, 'usage: turn IN OUT.bmp');
    Halt(2);
  end;
  Source := AnsiString(ParamStr(1));
  Target := AnsiString(ParamStr(2));
  Scan := LoadImageIntoDIB(PAnsiChar(Source), 1, nil);
  if Scan = 0 then
    Fail(Source);
  Upright := RotateDIB90(Scan);
  GlobalFree(Scan);
  if (Upright = 0) or not SaveDIB(PAnsiChar(Target), Upright) then
    Fail(Target);
  GlobalFree(Upright);
end.
