// Turns the first page of an image file upright and saves it as a bitmap file: turn.exe scan.tif upright.bmp
// csc /platform:x86 turn.cs Vorel32.cs, or /platform:x64 /define:VOREL64
using System;
using System.Text;
using Vorel32;

static class Turn
{
    static int Fail(string what)
    {
        int code = Vorel.ImgError(); // some failures of codec modules leave no code
        var why = new StringBuilder((int)Vorel.IMG_MESSAGE_BYTES);
        Vorel.ImgErrorString(why, code);
        Console.Error.WriteLine("{0}: {1}", what, code == 0 ? "damaged or not supported" : why.ToString());
        return 1;
    }

    static int Main(string[] words)
    {
        if (words.Length != 2)
        {
            Console.Error.WriteLine("usage: turn IN OUT.bmp");
            return 2;
        }
        IntPtr scan = Vorel.LoadImageIntoDIB(words[0], 1, IntPtr.Zero);
        if (scan == IntPtr.Zero) return Fail(words[0]);
        IntPtr upright = Vorel.RotateDIB90(scan);
        Vorel.GlobalFree(scan);
        if (upright == IntPtr.Zero || !Vorel.SaveDIB(words[1], upright)) return Fail(words[1]);
        Vorel.GlobalFree(upright);
        return 0;
    }
}
