Attribute VB_Name = "TurnSample"
' Turns the first page of an image file upright and saves it as a bitmap file. Add vorel32.bas to the project.
Option Explicit

Public Sub Turn(ByVal Source As String, ByVal Target As String)
  Dim Scan As Long, Upright As Long
  Scan = LoadImageIntoDIB(Source, 1, ByVal 0&)
  If Scan = 0 Then Fail Source
  Upright = RotateDIB90(Scan)
  GlobalFree Scan
  If Upright = 0 Then Fail Target
  If SaveDIB(Target, Upright) = 0 Then
    GlobalFree Upright
    Fail Target
  End If
  GlobalFree Upright
End Sub

Private Sub Fail(ByVal What As String)
  Dim Code As Long, Why As String
  Code = ImgError() ' some failures of codec modules leave no code
  Why = "damaged or not supported"
  If Code <> IMG_OK Then
    Why = Space$(IMG_MESSAGE_BYTES)
    ImgErrorString Why, Code
    Why = Left$(Why, InStr(Why, vbNullChar) - 1)
  End If
  Err.Raise vbObjectError + 512 + Code, "Vorel32", What & ": " & Why
End Sub
