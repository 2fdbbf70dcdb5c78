/** Vorel32: read, write, rotate and convert raster images held as packed DIBs.
 *
 *  One C interface for three builds: VOREL32.DLL on 32-bit Windows, VOREL64.DLL on 64-bit Windows and libvorel32.so on x86-64
 *  Linux. A function marked "Windows only" needs device contexts, device bitmaps or palettes and is declared for Windows alone.
 *
 *  THE PACKED DIB. Pictures cross this interface as DIB handles. A DIB is one movable global memory block that holds, without
 *  gaps:
 *    1. a BITMAPINFOHEADER of 40 bytes (biSize 40),
 *    2. the colour table: RGBQUAD entries (blue, green, red, reserved), as many as biClrUsed states or, if it is 0,
 *       2, 16 or 256 for 1, 4 or 8 bits per pixel and none for 16, 24 or 32,
 *    3. the pixel rows, bottom line first, each padded to ((biBitCount * biWidth + 31) / 32) * 4 bytes. Below 8 bits the
 *       leftmost pixel is in the highest bits of its byte; 24-bit pixels are blue, green, red.
 *  biHeight is a positive number of rows. Top-down DIBs (negative biHeight) are loaded and saved unchanged, but
 *  functions that work on pixels do not support them.
 *
 *  OWNERSHIP. The caller owns every returned handle and frees it: DIB handles with GlobalFree, bitmaps and palettes with
 *  DeleteObject. Functions only read their arguments and never free them, unless documented otherwise.
 *
 *  ARGUMENTS of these names mean the same wherever a comment does not explain them:
 *    dib             the handle of a DIB
 *    bitmap          the handle of a device bitmap
 *    path            the path of a file
 *    window          the handle of a window
 *    wParam, lParam  the parameters of the message
 *    state           the state of the window's display, an ImgDisplayState of the caller
 *    tracker         an ImgZoomTracker of the caller
 *
 *  ERRORS. Failure is a zero result (a null handle, FALSE). The reason is the calling thread's error code, read with
 *  ImgError; ImgErrorString gives its text. Success leaves the code unchanged unless documented otherwise, so read it only
 *  after a failure. "No code" means that a failure leaves the thread's code unchanged too.
 *
 *  DAMAGED INPUT. A block shorter than its header states is completed: missing bytes read as zero, writes past the end are
 *  dropped. Sizes are computed without wrapping; a size too large for a block fails like an allocation. A null,
 *  freed or invalid handle fails as documented and does no harm (on Windows as far as the system detects it).
 *
 *  THREADS. There are no locks. Each thread has its own error code and settings. The caller serialises calls that share a
 *  handle. Long operations show the wait cursor and restore the previous one (Windows). If memory
 *  is too short to store a thread's error code, the thread is ended inside the call that it made.
 *
 *  PATHS are zero-terminated: in the system's ANSI code page on Windows, plain bytes on Linux. A name without a folder is in
 *  the current folder. On Windows bitmap files and colour fax page sets are opened by paths of at most 127 characters, and
 *  by a name without a folder also in the system's folders. A null path cannot be opened.
 */
#ifndef VOREL32_H
#define VOREL32_H

#ifdef _WIN32
#include <windows.h>
#define VORELCALL __stdcall
#define VOREL_API
#else
#include <stddef.h>
#include <stdint.h>
#define VORELCALL
#define VOREL_API __attribute__((visibility("default")))
#endif

/** The library's file name, for programs that load it themselves. */
#if defined(_WIN64)
#define VOREL_FILE_NAME "VOREL64.DLL"
#elif defined(_WIN32)
#define VOREL_FILE_NAME "VOREL32.DLL"
#else
#define VOREL_FILE_NAME "libvorel32.so.5"
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* ---- The platform's types and memory, where the platform is not Windows ------------------------------------------- */

#ifndef _WIN32

typedef int BOOL;
typedef unsigned int UINT;
typedef uint16_t WORD;
typedef int HFILE;     /**< An open file: its POSIX file descriptor. */
typedef void* HGLOBAL; /**< A global memory block. Opaque: the handle of a movable block is not its address. */
typedef const char* LPCSTR;

#ifndef TRUE
#define TRUE 1
#define FALSE 0
#endif

#define HFILE_ERROR (-1)

#define GMEM_FIXED 0x0000u    /**< The handle is the block's address. */
#define GMEM_MOVEABLE 0x0002u /**< Only GlobalLock gives the block's address. */
#define GMEM_ZEROINIT 0x0040u /**< New bytes are zero. */
#define GMEM_MODIFY 0x0080u   /**< GlobalReAlloc changes the kind of block, not its size. */
#define GHND (GMEM_MOVEABLE | GMEM_ZEROINIT)
#define GPTR (GMEM_FIXED | GMEM_ZEROINIT)

#define BI_RGB 0u
#define BI_RLE8 1u
#define BI_RLE4 2u
#define BI_BITFIELDS 3u

#pragma pack(push, 2)

/** The 14 bytes in front of the DIB in a Windows bitmap file. */
typedef struct tagBITMAPFILEHEADER {
  uint16_t bfType; /**< 0x4D42, "BM" */
  uint32_t bfSize; /**< bytes in the file */
  uint16_t bfReserved1;
  uint16_t bfReserved2;
  uint32_t bfOffBits; /**< bytes from the start of the file to the pixel rows */
} BITMAPFILEHEADER;

#pragma pack(pop)

/** The header of every packed DIB. */
typedef struct tagBITMAPINFOHEADER {
  uint32_t biSize;         /**< 40 */
  int32_t biWidth;         /**< pixels */
  int32_t biHeight;        /**< rows, bottom line first */
  uint16_t biPlanes;       /**< 1 */
  uint16_t biBitCount;     /**< bits per pixel: 1, 4, 8, 16, 24 or 32 */
  uint32_t biCompression;  /**< BI_RGB, BI_RLE8, BI_RLE4 or BI_BITFIELDS */
  uint32_t biSizeImage;    /**< bytes of pixel data; 0 means stride times height */
  int32_t biXPelsPerMeter; /**< pixels per metre across; 0 means unknown */
  int32_t biYPelsPerMeter; /**< pixels per metre down; 0 means unknown */
  uint32_t biClrUsed;      /**< colour table entries; 0 means the number that biBitCount implies */
  uint32_t biClrImportant;
} BITMAPINFOHEADER;

/** The older 12-byte header, found only in files. Its colour table has RGBTRIPLE entries. */
typedef struct tagBITMAPCOREHEADER {
  uint32_t bcSize; /**< 12 */
  uint16_t bcWidth;
  uint16_t bcHeight;
  uint16_t bcPlanes;
  uint16_t bcBitCount;
} BITMAPCOREHEADER;

typedef struct tagRGBQUAD {
  uint8_t rgbBlue, rgbGreen, rgbRed, rgbReserved;
} RGBQUAD;

typedef struct tagRGBTRIPLE {
  uint8_t rgbtBlue, rgbtGreen, rgbtRed;
} RGBTRIPLE;

/** Allocates a memory block.
 *  flags  GMEM_FIXED or GMEM_MOVEABLE, with GMEM_ZEROINIT for zero-filled; GHND is movable and zero-filled
 *  bytes  its size; a movable block of 0 bytes exists but cannot be locked until it is given a size
 *  Returns the handle. NULL: memory is short. Owner: The caller frees the block with GlobalFree. */
VOREL_API HGLOBAL GlobalAlloc(UINT flags, size_t bytes);

/** Changes a block's size, keeping its content up to the smaller of the two sizes.
 *  block  its handle
 *  bytes  the new size
 *  flags  GMEM_ZEROINIT zeroes added bytes; GMEM_MOVEABLE lets a fixed or locked block move; GMEM_MODIFY keeps the size, and
 *         with GMEM_MOVEABLE makes a fixed block movable
 *  A locked or fixed block that may not move can only shrink.
 *  Returns the handle, unchanged for a movable block. NULL: memory is short, or the block may not move; it is unchanged.
 *  Owner: The result replaces the old handle. */
VOREL_API HGLOBAL GlobalReAlloc(HGLOBAL block, size_t bytes, UINT flags);

/** Locks a block. A movable block counts up to 255 locks; further locks are not counted and need no unlocking.
 *  block  its handle
 *  Returns the address of its first byte. NULL: an invalid handle, or a movable block of 0 bytes.
 *  Owner: The address is valid while the block is locked. */
VOREL_API void* GlobalLock(HGLOBAL block);

/** Removes one lock.
 *  block  its handle
 *  Returns TRUE while locks remain and for every fixed block, FALSE if none remains. FALSE: an invalid handle. */
VOREL_API BOOL GlobalUnlock(HGLOBAL block);

/** Returns the block's size in bytes, exactly as requested. 0: an invalid handle.
 *  block  its handle */
VOREL_API size_t GlobalSize(HGLOBAL block);

/** Frees a block, locked or not.
 *  block  its handle; NULL does nothing
 *  Returns NULL. Errors: The handle itself if it is invalid. Owner: The handle is no longer valid. */
VOREL_API HGLOBAL GlobalFree(HGLOBAL block);

#endif /* !_WIN32 */

/* ---- Errors and version -------------------------------------------------------------------------------------------- */

/** The calling thread's error codes 0 to 31. Some functions store codes of 500 and above, which have no text. */
typedef enum ImgErrorCode {
  IMG_OK = 0,                   /**< "Operation was successful." */
  IMG_E_MEMORY = 1,             /**< "Not enough memory." */
  IMG_E_CREATE_DC = 2,          /**< "Unable to create DC" */
  IMG_E_OPEN_FILE = 3,          /**< "Can't open file" */
  IMG_E_FILE_IO = 4,            /**< "General I/O error in reading or writting." */
  IMG_E_OPEN_CLIPBOARD = 5,     /**< "Can't open clipboard" */
  IMG_E_RECEIVE_CLIPBOARD = 6,  /**< "Could not receive from clipboard" */
  IMG_E_COPY_BITS = 7,          /**< "Can't copy bits from bitmap" */
  IMG_E_PARAMETER = 8,          /**< "Parameter error" */
  IMG_E_FORMAT = 9,             /**< "Invalid file format" */
  IMG_E_CREATE_PALETTE = 10,    /**< "Can't create palette" */
  IMG_E_CREATE_BITMAP = 11,     /**< "Can't create bitmap" */
  IMG_E_MAPPING_MODE = 12,      /**< "Mapping mode is improperly set in metafile" */
  IMG_E_PIXEL_BITS = 13,        /**< "Invalid bit/pixel value" */
  IMG_E_CLIPBOARD_FORMAT = 14,  /**< "Format not found in clipboard file" */
  IMG_E_BITMAP_PARAMETERS = 15, /**< "Can't get bitmap parameters" */
  IMG_E_CREATE_METAFILE = 16,   /**< "Can't create metafile" */
  IMG_E_LOCK = 17,              /**< "Can't lock global memory" */
  IMG_E_COMPRESSED = 18,        /**< "DIB must be uncompressed" */
  IMG_E_DIB_SIZE = 19,          /**< "Invalid DIB size" */
  IMG_E_DITHER_PARAMETER = 20,  /**< "Paramater error in Dithering" */
  IMG_E_HEADER_BITS = 21,       /**< "Bad bit/pixel value in DIB header" */
  IMG_E_QUENT_BITS = 22,        /**< "The QUENT algorithm creates only 1 or 4 bit image" */
  IMG_E_PRINTER_DC = 23,        /**< "Could not get printer DC" */
  IMG_E_PRINTER_RASTER = 24,    /**< "Device not capable to handle raster" */
  IMG_E_DISPLAY_DC = 25,        /**< "Could not get dispaly DC" */
  IMG_E_SET_ABORT_PROC = 26,    /**< "Escape failed SETABORTPROC" */
  IMG_E_START_DOC = 27,         /**< "Escape failed STARTDOC" */
  IMG_E_NEXT_BAND = 28,         /**< "Escape failed NEXTBAND" */
  IMG_E_CLIPBOARD = 29,         /**< "Clipboard error" */
  IMG_E_NOTHING_TO_DO = 30,     /**< "Nothing to do." */
  IMG_E_NOTHING_TO_CONVERT = 31 /**< "Nothing to convert." */
} ImgErrorCode;

/** Bytes that hold any message of ImgErrorString with its terminating zero. */
#define IMG_MESSAGE_BYTES 50

/** Returns the calling thread's error code, as the last operation that stored one left it; 0 in a new thread. Errors: None. */
VOREL_API int VORELCALL ImgError(void);

/** Sets the calling thread's error code.
 *  code  0 to 31
 *  Returns the previous code. Errors: A code outside its range changes nothing. */
VOREL_API int VORELCALL SetImgError(int code);

/** Gives the text of an error code.
 *  buffer  receives the message with its terminating zero; IMG_MESSAGE_BYTES are enough. NULL shows the message instead, in a
 *          message box titled "VOREL error" (on Linux: a line on the standard error stream)
 *  code    0 to 31; any other value stands for the thread's current code, and "Unknown error." if it has no text either
 *  Returns buffer. Errors: None. Owner: The text is written to the caller's buffer. */
VOREL_API char* VORELCALL ImgErrorString(char* buffer, int code);

/** Copies the version text, "Version 5.59".
 *  buffer  receives the text
 *  length  bytes at buffer. 13 or more: the text with its terminating zero. 1 to 12: exactly that many characters and no
 *          terminating zero. 0 or less: nothing
 *  Errors: None; a null buffer receives nothing. */
VOREL_API void VORELCALL GetImageVersion(char* buffer, int length);

/* ---- DIB headers and palettes -------------------------------------------------------------------------------------- */

/** Returns the size in bytes of the colour table of a header in memory: colours * 4 for a 40-byte header,
 *  colours * 3 for any other (the RGBTRIPLE table of a BITMAPCOREHEADER). 0, no code: NULL, or a table of 4 GB or more.
 *  header  a complete BITMAPINFOHEADER or BITMAPCOREHEADER, usually a locked DIB */
VOREL_API UINT VORELCALL PaletteSize(void* header);

/** Reads the header and colour table of a bitmap file from the current file position, and leaves the position at the pixel data.
 *  file  open for reading and seekable (Windows: from OpenFile or _lopen; Linux: a file descriptor), at a BITMAPFILEHEADER,
 *        a BITMAPINFOHEADER or a BITMAPCOREHEADER; stays open. Offsets count from the position at the call; one of 2 GB or
 *        more to the pixel data is ignored. After a failure the position is where reading ended
 *  Returns a DIB handle without pixels: the 40-byte header, with biSizeImage and biClrUsed filled in, and the table as
 *  RGBQUAD entries (zero where the file is too short). biSizeImage is unsigned: if a top-down picture
 *  does not state it, it becomes 2^32 minus the picture's size. NULL: IMG_E_PARAMETER (file is HFILE_ERROR),
 *  IMG_E_FILE_IO (fewer than 40 bytes from the header on, even for a 12-byte header), IMG_E_FORMAT (header of
 *  neither 12 nor 40 bytes); no code for a negative width, for a size that does not fit 32 bits, or when memory is short. */
VOREL_API HGLOBAL VORELCALL ReadDIBInfo(HFILE file);

/** Complements the first biClrUsed colours of the table, in place; reserved bytes are unchanged.
 *  If biClrUsed is 0, no colour is changed, even if the depth implies a table.
 *  dib  any depth, a 40-byte header
 *  Returns TRUE. FALSE, no code: not a DIB handle, or biSize is not 40. Owner: `dib` stays the caller's and is changed. */
VOREL_API BOOL VORELCALL InvertDIBPalette(HGLOBAL dib);

/** Exchanges the values 0 and 1 of a 1-bit DIB in place: swaps its two colours and inverts every bit of the rows, padding
 *  included, so that the picture looks the same. The two colours are read directly behind a 40-byte header and the rows directly
 *  behind the colours, whatever biSize and biClrUsed state. With a negative height only the colours are swapped.
 *  dib  1 bit
 *  Errors: No code; at other depths and for an invalid handle nothing is changed.
 *  Owner: `dib` stays the caller's and is changed. */
VOREL_API void VORELCALL InvertMonoDIB(HGLOBAL dib);

#ifdef _WIN32

/** Makes a logical palette with a DIB's colours. Windows only.
 *  dib  1, 4 or 8 bits, or deeper with a colour table
 *  Returns a palette for DeleteObject. NULL: IMG_E_CREATE_PALETTE (also for more than 65,535 colours); no code for an
 *  invalid DIB handle and for a DIB without colours (24 bits). */
VOREL_API HPALETTE VORELCALL CreateDIBPalette(HGLOBAL dib);

/** Makes a logical palette of the entries of the screen's system palette. Windows only.
 *  Returns a palette for DeleteObject. NULL: IMG_E_CREATE_DC, IMG_E_CREATE_PALETTE (also on a true-colour display, which has
 *  none); no code if the system does not create the palette. */
VOREL_API HPALETTE VORELCALL GetCurrentPalette(void);

/** Fills an array with the colours of the screen's system palette. Windows only.
 *  colours  as many entries as the screen's palette has (SIZEPALETTE: 256 at 8 bits); reserved bytes become 0
 *  Returns TRUE. FALSE: the codes of GetCurrentPalette; no code if the display has no palette and for a null array. */
VOREL_API BOOL VORELCALL GetSystemPalette(RGBQUAD* colours);

/* ---- DIBs and device bitmaps (Windows only) ------------------------------------------------------------------------ */

/** Makes a DIB of a device bitmap: 1, 4 or 8 bits as the bitmap, 24 for deeper ones. Windows only.
 *  bitmap   not selected into a device context
 *  palette  selected while the system reads the bitmap; NULL for the screen's. The system fills in the colour table as it
 *           does for GetDIBits. If it does not, the table has the palette's entries or, if there are none or too many, the
 *           default colours: black and white, the 16 standard colours, or a 3-3-2 cube
 *  Returns a DIB handle; its block has 10 spare bytes at the end. NULL, no code: no bitmap, no screen, or memory is short.
 *  With a NULL palette on a screen without a palette the call succeeds, but the thread's code is that of GetCurrentPalette
 *  (IMG_E_CREATE_PALETTE on true-colour displays). */
VOREL_API HGLOBAL VORELCALL ConvertBitmapToDIB(HBITMAP bitmap, HPALETTE palette);

/** Makes a device bitmap of a DIB: monochrome for 1 bit, else in the display's format. Windows only.
 *  dib  its header must have 40 bytes
 *  Returns a bitmap for DeleteObject. NULL: IMG_E_CREATE_BITMAP; no code for an invalid DIB handle or without a DC. A
 *  DIB whose palette cannot be created is converted without it, and leaves IMG_E_CREATE_PALETTE. */
VOREL_API HBITMAP VORELCALL ConvertDIBToBitmap(HGLOBAL dib);

/** Makes a 1-bit copy of a device bitmap, with each colour mapped to black or white by the system. Windows only.
 *  Returns a bitmap for DeleteObject. NULL: IMG_E_PARAMETER (no bitmap), IMG_E_MEMORY; no code if the system does not create
 *  the bitmap. */
VOREL_API HBITMAP VORELCALL ConvertToMonochromeBitmap(HBITMAP bitmap);

/** Makes a device bitmap with the same format and bits. Windows only.
 *  Returns a bitmap for DeleteObject. NULL: IMG_E_MEMORY, IMG_E_COPY_BITS (also: not a bitmap); no code if
 *  the system does not create the bitmap. */
VOREL_API HBITMAP VORELCALL DuplicateBitmap(HBITMAP bitmap);

#endif /* _WIN32 */

/* ---- Bitmap files -------------------------------------------------------------------------------------------------- */

/** Loads a Windows bitmap file, with or without its file header, with a 40- or 12-byte header.
 *  Returns a DIB handle. Run-length compressed rows stay compressed and top-down ones top-down; rows missing from the
 *  file are zero; colour masks (BI_BITFIELDS) are not kept. NULL: IMG_E_OPEN_FILE, IMG_E_FILE_IO, IMG_E_FORMAT; no code for
 *  sizes too large for a block (including a top-down picture without a stated size) and when memory is short. */
VOREL_API HGLOBAL VORELCALL LoadDIBFromFile(LPCSTR path);

/** Saves a DIB as a Windows bitmap file, creating or replacing the file: a 14-byte file header, then the whole memory
 *  block, including spare bytes at its end. The DIB is not checked beyond the presence of its header.
 *  dib  any depth, compressed or not
 *  Returns TRUE. FALSE: IMG_E_PARAMETER (NULL, or a block shorter than 40 bytes), IMG_E_LOCK (not a handle),
 *  IMG_E_OPEN_FILE, IMG_E_FILE_IO. A write that fails part-way, on a full disk for instance, can go unnoticed: compare the
 *  file's size with 14 + GlobalSize(dib) if this matters. */
VOREL_API BOOL VORELCALL SaveDIB(LPCSTR path, HGLOBAL dib);

#ifdef _WIN32

/** Loads a bitmap file as a device bitmap: LoadDIBFromFile, then ConvertDIBToBitmap. Windows only.
 *  Returns a bitmap for DeleteObject. NULL: the codes of these functions. */
VOREL_API HBITMAP VORELCALL LoadBitmapFromFile(LPCSTR path);

/** Saves a device bitmap as a bitmap file: ConvertBitmapToDIB, then SaveDIB. Windows only.
 *  palette  as for ConvertBitmapToDIB; NULL is allowed
 *  Returns TRUE. FALSE: the codes of these functions. ConvertBitmapToDIB may leave its code on success too. */
VOREL_API BOOL VORELCALL SaveBitmap(LPCSTR path, HBITMAP bitmap, HPALETTE palette);

#endif /* _WIN32 */

/* ---- Image files by format ------------------------------------------------------------------------------------------ */

/** Image file formats, as GetImageFormat returns them and SaveDIBInImageFormat accepts them. */
typedef enum ImgFormat {
  IMG_FORMAT_UNKNOWN = 0,
  IMG_FORMAT_TIFF = 1,
  IMG_FORMAT_PCX = 2,
  IMG_FORMAT_DCX = 3, /**< several PCX pages in one file */
  IMG_FORMAT_GIF = 4,
  IMG_FORMAT_TGA = 5,
  IMG_FORMAT_BITMAP = 6,
  IMG_FORMAT_METAFILE = 7,
  IMG_FORMAT_CLIPBOARD = 8,
  IMG_FORMAT_COLOR_FAX = 9, /**< a page set: a text that lists the files of each page's colour planes */
  IMG_FORMAT_TEXT = 10,
  IMG_FORMAT_CALS = 12,
  IMG_FORMAT_JPEG = 13,
  IMG_FORMAT_PNG = 14,
  IMG_FORMAT_ENHANCED_METAFILE = 15
} ImgFormat;

/** Detects the format of a file by its first 512 bytes and, for TGA, by the end of its name.
 *  The tests run in a fixed order and the first match wins: a text that begins with a line feed is PCX, a file whose bytes 2
 *  and 3 are 9 and 0 is a metafile, and a JPEG or PNG file called *.tga is TGA.
 *  Returns an ImgFormat. Errors: No code; an unreadable file that is not called *.tga is IMG_FORMAT_UNKNOWN. */
VOREL_API int VORELCALL GetImageFormat(LPCSTR path);

/** Loads an image file of any format. Bitmap files and colour fax page sets are read by the library itself; TIFF, PCX, DCX,
 *  GIF, TGA, CALS, JPEG and PNG files by a codec module from the library's folder or, if it has no file of that
 *  name, from the system's search path for modules. A missing module is reported in a message box (on Linux: on standard
 *  error).
 *  page    counted from 1, of TIFF, DCX and GIF files and page sets; ignored for other formats
 *  status  receives the loader's status; may be NULL. PCX, DCX, GIF and PNG files and page sets set it (see
 *          "Codec modules"), other formats leave it unchanged
 *  Returns a DIB handle. NULL: IMG_E_FORMAT (not recognised, or text; *status becomes 9 too), the codes of LoadDIBFromFile
 *  for bitmap files and of LoadColorFaxPage for page sets; no code when a module is missing or fails. */
VOREL_API HGLOBAL VORELCALL LoadImageIntoDIB(LPCSTR path, int page, int* status);

/** Saves a DIB in a format of the caller's choice, through the codec modules like LoadImageIntoDIB.
 *  dib     uncompressed, 1, 4, 8 or 24 bits; for bitmap files any DIB
 *  format  an ImgFormat. PNG files and page sets can be loaded but not saved
 *  option  GIF: 1 stores the rows interlaced, 0 in order. Ignored for other formats
 *  value   TIFF: the compression by its TIFF number, see ImgSaveTiff; 0 picks one. TGA: 0 stores plain rows, any other number
 *          run-length packets if there is no colour table. Ignored for other formats; JPEG files get quality 75
 *  An existing DCX file gains a page; every other file is replaced.
 *  Returns TRUE. FALSE: the codes of SaveDIB for bitmap files; no code for
 *  a format that cannot be saved, or when a module is missing or fails. */
VOREL_API BOOL VORELCALL SaveDIBInImageFormat(LPCSTR path, HGLOBAL dib, int format, int option, int value);

/** Returns the number of pages that a colour fax page set states as "TotalPages". -1: IMG_E_OPEN_FILE (the file does not
 *  exist), IMG_E_MEMORY; no code if there is no such entry, as in other files and in any file larger than 1 MB. */
VOREL_API int VORELCALL GetNumberOfImagesInFaxFile(LPCSTR path);

/** Loads a page of a colour fax page set.
 *  The set is a text in the form of an initialisation file, of at most 1 MB. Its section "ColorFax" states TotalPages,
 *  FirstPage (the number of the first page, 1 if left out), Planes (1 to 4), BitsPixel (1) and Files. If Files is
 *  TotalPages times Planes, the section "Page1", "Page2", ... names the file of each plane as Plane0 to Plane3. Otherwise
 *  the sections "File%u", counted from FirstPage, give the Name of a file that holds several pages, plane after plane,
 *  and the number of its Pages. Names have at most 128 characters and refer to files for LoadImageIntoDIB; a relative name
 *  is relative to the current folder.
 *  page    counted from 1
 *  status  receives 3 if the set does not exist, else the status of loading a plane; may be NULL
 *  Returns a DIB handle: with one plane the unchanged image of that plane, else a 4-bit DIB whose 16 colours have red in plane 0,
 *  green in plane 1, blue in plane 2 and full brightness in plane 3. NULL: IMG_E_OPEN_FILE (the set does not exist),
 *  IMG_E_MEMORY, the codes of LoadImageIntoDIB for a plane; no code for a page out of range, for a BitsPixel other than 1, for
 *  Planes outside 1 to 4 and for planes that are not 1-bit images of one size with all their rows. */
VOREL_API HGLOBAL VORELCALL LoadColorFaxPage(LPCSTR path, int page, int* status);

/* ---- Codec modules -------------------------------------------------------------------------------------------------- */

/*  The interface of a codec module, for programs that call one directly and for authors of other modules. A module is
 *  MERV32.DLL and so on (on Linux MERV32.so), loaded by the call that needs it and released before that call returns; it
 *  exports its entry points by plain name, with the calling convention of this header.
 *
 *    format  loads from          saves with
 *    TIFF    MERV32  LoadTiffIntoDIB (ImgLoadPage)     MERV  SaveDIBInTiffFormat (ImgSaveTiff)
 *    CALS    MERV32  LoadCALSIntoDIB (ImgLoadPicture)  MERV  SAVEDIBINCALSFORMAT (ImgSaveCals)
 *    PCX     ODAL32  LoadPCXIntoDIB (ImgLoadPicture)   ODAL  SaveDIBInPCXFormat (ImgSavePicture)
 *    DCX     ODAL32  LoadDCXIntoDIB (ImgLoadPage)      ODAL  MakeDCXFile (ImgMakeFile), SaveDIBInDCXFormat (ImgSavePicture)
 *    GIF     SUNE32  LoadGIFIntoDIB (ImgLoadPage)      SUNE  SaveDIBInGIFFormat (ImgSaveGif)
 *    TGA     BRIX32  LoadTGAIntoDIB (ImgLoadPicture)   BRIX  SaveDIBInTGAFormat (ImgSaveTga)
 *    JPEG    KALO32  LoadJPEGIntoDIB (ImgLoadFile)     KALO  SaveDIBInJPEGFile (ImgSaveJpeg)
 *    PNG     WERT32  LoadPNGIntoDIB (ImgLoadPicture)   WERT  SaveDIBInPNGFormat (ImgSavePicture), which the library never calls
 *
 *  The modules of this library export more than it calls:
 *    ImgCountPages           GetNumberOfImagesInTiffFile (MERV32), GetNumberOfImagesInDCXFile (ODAL32), GetNumberOfImagesInGIFFile
 *                            (SUNE32)
 *    ImgTiffCompression      GetTiffCompression (MERV32)
 *    ImgSaveJpegForm         SaveDIBInJPEGForm (KALO)
 *    ImgNameOfLibraries      NameOfLibraries (KALO32, MERV32, SUNE32, WERT32)
 *    ImgDescribeOnly         DescribeOnly (every module that loads)
 *    ImgReportsFailedWrites  ReportsFailedWrites (every module that saves)
 *
 *  Loaders return a new DIB handle that the caller owns: 1, 4, 8 or 24 bits, uncompressed, with the whole colour table that
 *  the depth implies. Savers take a DIB of this kind and only read it. A status variable may be NULL; an entry
 *  point sets it to 0 or, on failure, to one of these numbers, for which ImgErrorString has texts:
 *     1  memory is short, or the picture is too large for a file of this size
 *     3  the file cannot be opened or created, or its path is null
 *     4  reading or writing failed part-way
 *     8  page not found; a null handle or a block that is no DIB; a setting that does not fit the picture
 *     9  the file is damaged or of an unsupported variant
 *    13  the format does not support this depth
 *    17  not a DIB handle
 *    18  the DIB is compressed
 *    19  the picture has no pixels, or more than the format can state
 *    21  a DIB of another depth than 1, 4, 8 or 24 bits
 */

/** Loads the one picture of a file. */
typedef HGLOBAL(VORELCALL* ImgLoadFile)(LPCSTR path);
/** The same, with a status. */
typedef HGLOBAL(VORELCALL* ImgLoadPicture)(LPCSTR path, int* status);

/** Loads a page, counted from 1, without decoding the others. */
typedef HGLOBAL(VORELCALL* ImgLoadPage)(LPCSTR path, int page, int* status);

/** Returns the number of pages, or 0 on failure. */
typedef int(VORELCALL* ImgCountPages)(LPCSTR path, int* status);

/** Returns the TIFF number of the compression of a page, or 0 on failure. */
typedef int(VORELCALL* ImgTiffCompression)(LPCSTR path, int page, int* status);

/** Returns TRUE: the savers of this module fail if any byte could not be written. If a module lacks this entry point, load a
 *  saved file to check it. */
typedef BOOL(VORELCALL* ImgReportsFailedWrites)(void);

/** What ImgDescribeOnly tells of a picture. */
typedef struct ImgDescription {
  BITMAPINFOHEADER header; /**< of the DIB that loading it gives */
  int sampleBits;          /**< of the file; a DIB has the upper 8 of them */
  BOOL hasOpacity;         /**< stated by the file; loading blends the pixels over white */
} ImgDescription;

/** Makes the loaders of a module describe pictures on this thread: they fill in `description` in place of decoding rows and return
 *  NULL, with status 0. Damage behind a file's header goes unnoticed. GIF files are described by their colours, whatever their
 *  pixels use. NULL makes them load again. Returns FALSE, changing nothing, while another thread has pictures described. */
typedef BOOL(VORELCALL* ImgDescribeOnly)(ImgDescription* description);

/** Returns the names and versions of the libraries that a module uses; for example
 *  "libpng 1.6.39, zlib 1.2.13". The module owns the text. */
typedef LPCSTR(VORELCALL* ImgNameOfLibraries)(void);

/** Saves a picture. PCX and PNG files are replaced, a DCX file gains a page. */
typedef BOOL(VORELCALL* ImgSavePicture)(LPCSTR path, HGLOBAL dib, int* status);

/** Creates a DCX file without pages, or empties one. */
typedef BOOL(VORELCALL* ImgMakeFile)(LPCSTR path, int* status);

/** Saves a picture as GIF. interlaced: 0 or 1. */
typedef BOOL(VORELCALL* ImgSaveGif)(LPCSTR path, HGLOBAL dib, int interlaced, int* status);

/** Saves a picture as TIFF.
 *  compression  by TIFF number: 1 none, 2 modified Huffman, 3 Group 3, 4 Group 4 (these three for 1 bit alone), 5 LZW, 7 JPEG
 *               (grey pictures of 8 bits, and 24 bits), 8 deflate, 32773 PackBits; 0 picks Group 4 for 1 bit and deflate otherwise
 *  page         1 creates a new file; any other number adds a page at the end of the existing file */
typedef BOOL(VORELCALL* ImgSaveTiff)(LPCSTR path, HGLOBAL dib, int compression, int page);

/** Saves a 1-bit picture as CALS raster. The last three arguments are 0. */
typedef BOOL(VORELCALL* ImgSaveCals)(LPCSTR path, HGLOBAL dib, int reserved1, int reserved2, int reserved3);

/** Saves a picture as TGA. run_length: 0 or 1. footer: 1 ends the file with the signature of the format's second version. */
typedef BOOL(VORELCALL* ImgSaveTga)(LPCSTR path, HGLOBAL dib, int run_length, int footer);

/** Saves a picture as JPEG. quality: 1 to 100. */
typedef BOOL(VORELCALL* ImgSaveJpeg)(LPCSTR path, HGLOBAL dib, int quality);
/** The same, progressive or not: 1 or 0. */
typedef BOOL(VORELCALL* ImgSaveJpegForm)(LPCSTR path, HGLOBAL dib, int quality, int progressive);

/* ---- Quarter turns and mirrors ------------------------------------------------------------------------------------- */

/*  Quarter turns swap width and height, and the two resolutions, and set the new biSizeImage; half turns and mirrors do not change
 *  the header.
 *  dib  1, 4, 8 or 24 bits. At other depths the result's pixels are all zero, except by FlipDIBVertical, which accepts any depth
 *  Returns a new DIB handle whose block has 4 spare bytes at the end. NULL, no code: not a DIB handle, a header of fewer than 40
 *  bytes, a negative width or height, or memory is short. */

/** Turns a DIB 90 degrees clockwise. */
VOREL_API HGLOBAL VORELCALL RotateDIB90(HGLOBAL dib);

/** Turns a DIB 180 degrees. */
VOREL_API HGLOBAL VORELCALL RotateDIB180(HGLOBAL dib);

/** Turns a DIB 90 degrees counter-clockwise and shifts it one column to the right: the result's first column is empty and the
 *  source's bottom row is stored in the row padding or, if rows have none, in the first pixel of the row above (for the last
 *  row, in the spare bytes). RotateDIB90 followed by RotateDIB180 turns without the shift. */
VOREL_API HGLOBAL VORELCALL RotateDIB270(HGLOBAL dib);

/** Exchanges top and bottom. */
VOREL_API HGLOBAL VORELCALL FlipDIBVertical(HGLOBAL dib);

/** Exchanges left and right. */
VOREL_API HGLOBAL VORELCALL FlipDIBHorizontal(HGLOBAL dib);

#ifdef _WIN32

/*  DIB sections are handled as bitmaps.
 *  bitmap  1, 4, 8 or 24 bits per pixel and plane; at other depths (a 32-bit display's bitmaps) the result is all zero, except by
 *          FlipBitmapVertical, which accepts any depth
 *  Zero results: IMG_E_BITMAP_PARAMETERS (no bitmap), IMG_E_MEMORY, IMG_E_COPY_BITS and, for the quarter turns,
 *  IMG_E_CREATE_BITMAP. */

/** Turns a device bitmap 90 degrees counter-clockwise (RotateDIB90 turns clockwise). Windows only.
 *  Returns a new bitmap for DeleteObject. */
VOREL_API HBITMAP VORELCALL RotateBitmap90(HBITMAP bitmap);

/** Turns a device bitmap 90 degrees clockwise. In 1-bit bitmaps the bottom row is not copied: the result's first column
 *  is zero. Windows only. Returns a new bitmap for DeleteObject. */
VOREL_API HBITMAP VORELCALL RotateBitmap270(HBITMAP bitmap);

/** Turns a device bitmap 180 degrees, in place. Windows only. Returns TRUE. Owner: `bitmap` stays the caller's and is changed. */
VOREL_API BOOL VORELCALL RotateBitmap180(HBITMAP bitmap);

/** Exchanges top and bottom of a device bitmap, in place. Windows only. Returns TRUE.
 *  Owner: `bitmap` stays the caller's and is changed. */
VOREL_API BOOL VORELCALL FlipBitmapVertical(HBITMAP bitmap);

/** Exchanges left and right of a device bitmap, in place. Windows only. Returns TRUE.
 *  Owner: `bitmap` stays the caller's and is changed. */
VOREL_API BOOL VORELCALL FlipBitmapHorizontal(HBITMAP bitmap);

/** Inverts every bit of a device bitmap, in place. Needs an active window of the calling thread. Windows only.
 *  bitmap  monochrome or in the display's format; any other bitmap or object is unchanged
 *  Returns TRUE, even if nothing was inverted. FALSE, no code: no active window, or no device context.
 *  Owner: `bitmap` stays the caller's and is changed. */
VOREL_API BOOL VORELCALL InvertBitmap(HBITMAP bitmap);

#endif /* _WIN32 */

/* ---- Turning by any angle, skewing, scaling, cutting ---------------------------------------------------------------- */

/** Turns a DIB about its centre by any whole number of degrees, picking the nearest pixel. The result is just large enough, has
 *  even sides, and is 0 (colour 0, or black at 24 bits) outside the picture.
 *  dib      1, 4, 8 or 24 bits, a 40-byte header; at other depths all pixels of the result are 0
 *  angle    degrees, positive counter-clockwise
 *  method   1 counts steps along rows; any other number computes exact positions and rounds at each pixel
 *  status   receives 0 or the number of a failure; may be NULL. The thread's code is unchanged
 *  corners  receives eight numbers, x and y of the turned corners relative to the centre, in whole pixels: first stored row
 *           left and right, last stored row right and left; y counts rows in stored order, upwards. May be NULL
 *  Each resolution becomes a mixture of both, by the angle; multiples of 90 degrees except 0 exchange them. At 0 degrees an odd
 *  width or height grows by one, and the source's first column or row may be missing from the result.
 *  Returns a DIB handle. NULL, number in `status`: 500 (compressed), 501 (width or height is a multiple of 65,536, 0 for instance),
 *  503 (memory is short), 505 (not a handle), 506 (null, or another header). */
VOREL_API HGLOBAL VORELCALL RotateDIB(HGLOBAL dib, int angle, int method, int* status, int* corners);

/** Shears a DIB: moves its rows or columns, each by a whole number of pixels. The result is larger by the offset and is
 *  0 outside the picture.
 *  dib        1, 4, 8 or 24 bits, a 40-byte header; at other depths all pixels of the result are 0
 *  direction  not 0: rows move right; 0: columns move up
 *  offset     shift in pixels of the edge that moves furthest. Rows: the upper ones if positive, else the lower ones. Columns:
 *             the right ones if positive, else the left ones
 *  error      receives the code of a failure; not written on success. May be NULL
 *  corners    receives eight numbers, x and y of four corners in the result, clockwise from the upper left one, y downwards
 *             from the top. For columns they are the corners of the enlarged rectangle. Written once dib has passed its checks
 *  Returns a DIB handle, and sets the thread's code to 0. NULL, code in both: IMG_E_PARAMETER (null, or another header),
 *  IMG_E_LOCK, IMG_E_COMPRESSED, IMG_E_DIB_SIZE (width or height 0), IMG_E_MEMORY. */
VOREL_API HGLOBAL VORELCALL SkewDIB(HGLOBAL dib, int direction, int offset, int* error, int* corners);

/** Scales a DIB to a size in pixels.
 *  dib            1 bit: nearest pixel. 4, 8, 24 bits: interpolated, below 24 bits with the nearest colour of the table; black at
 *                 the beginning of a row becomes colour 0 whatever that colour is
 *  mode           0 linear, any other number cubic convolution with a = -1 (Keys, 1981); ignored for 1 bit
 *  width, height  in pixels; at 4, 8 and 24 bits only the low 16 bits of the argument count
 *  Resolutions and the rest of the header are unchanged; at 1 bit biSizeImage is unchanged too.
 *  Returns a DIB handle. NULL: IMG_E_PARAMETER (null), IMG_E_MEMORY (also: not a handle), IMG_E_HEADER_BITS (another depth),
 *  IMG_E_DIB_SIZE (a side of 0, or a picture wider than 65,535 or without pixels); no code for 1 bit. */
VOREL_API HGLOBAL VORELCALL ScaleDIB(HGLOBAL dib, int mode, unsigned width, unsigned height);

/** Magnifies the lower left part of a grey DIB, interpolating like ScaleDIB.
 *  dib                 4, 8 or 24 bits. Below 24 bits each colour counts as its grey, (blue + green + red + 1) / 3, and the
 *                      result is the colour nearest to the interpolated grey; at 24 bits each component is interpolated by itself
 *  width, height       of the part in pixels, from the first stored row and column
 *  x_factor, y_factor  whole magnifications, 1 or more
 *  mode                as for ScaleDIB
 *  Returns a DIB handle. NULL: IMG_E_PARAMETER (null, a part that is empty or reaches outside, a factor below 1), IMG_E_MEMORY
 *  (also: not a handle), IMG_E_HEADER_BITS (another depth), IMG_E_DIB_SIZE (a side of the result is more than 65,535). */
VOREL_API HGLOBAL VORELCALL ScaleGrayDIB(HGLOBAL dib, int width, int height, int x_factor, int y_factor, int mode);

/** Cuts a DIB in two at a line.
 *  dib            1, 4, 8 or 24 bits
 *  line           rows of the upper part, 1 to biHeight - 1
 *  first, second  receive the handles of the lower and the upper part. Each is written once its block is allocated, NULL if
 *                 memory is short; after a failure they may hold freed handles
 *  Both parts state the image size of the first.
 *  Returns TRUE. FALSE, no code: not a DIB handle, a null pointer, a negative width, another depth than 1, 4, 8 or 24 bits, a line
 *  outside its range, or memory is short. Owner: After success the caller frees both parts with GlobalFree. */
VOREL_API BOOL VORELCALL CutDIB(HGLOBAL dib, int line, HGLOBAL* first, HGLOBAL* second);

#ifdef _WIN32

/** Paints a device bitmap onto another. Windows only.
 *  x, y    the target position of the source's upper left corner. The system combines as many pixels as the target has,
 *          including whatever it returns beyond the source
 *  target  the bitmap to paint on; NULL becomes a copy of the source
 *  source  the bitmap to paint
 *  mask    of the source's size, or NULL; one in colour is made monochrome first. White lets the source through
 *  flag    without a mask: 0 replaces, any other number ORs. With a mask: 0 replaces, any other number XORs
 *  Returns TRUE. FALSE: 501 (mask and source differ in size), 506 (no source), 507 (the source cannot be copied), the codes of
 *  ConvertToMonochromeBitmap; no code if the system does not paint.
 *  Owner: All bitmaps are the caller's, a copy in `target` included (DeleteObject). With a mask the source is ANDed with it and a
 *  monochrome mask is inverted: both lose their contents. */
VOREL_API BOOL VORELCALL CombineBMP(int x, int y, HBITMAP* target, HBITMAP source, HBITMAP mask, int flag);

/** Paints a DIB onto another through device bitmaps, so the result has the display's colours. Windows only.
 *  x, y    the target position of the source's upper left corner, as for CombineBMP
 *  target  the DIB to paint on, changed in place; NULL becomes a copy of the source (without pixels if the source
 *          states no biSizeImage)
 *  source  the DIB to paint
 *  mask    of the source's size, or NULL. White lets the source through
 *  flag    without a mask: 0 replaces, any other number ORs. With a mask: 0 replaces, any other number XORs
 *  Returns TRUE. FALSE: 504 (no memory for the copy), 505 (not a DIB handle), 506 (no source), 508 (the source to be copied is
 *  compressed), 510 (a DIB cannot be converted, or the target is compressed), IMG_E_MEMORY, the codes of CombineBMP.
 *  A display without a palette leaves IMG_E_CREATE_PALETTE even though the call succeeds.
 *  Owner: All DIBs are the caller's, a copy in `target` included (GlobalFree); source and mask are only read. */
VOREL_API BOOL VORELCALL CombineDIB(int x, int y, HGLOBAL* target, HGLOBAL source, HGLOBAL mask, int flag);

#endif /* _WIN32 */

/* ---- Tone and colour ------------------------------------------------------------------------------------------------ */

/** Operations of ComputeHistogram and ComputeLUT. Any other number does nothing and returns NULL with error 0. */
typedef enum ImgOperation { IMG_ALLOCATE = 30, IMG_COMPUTE = 31, IMG_FREE = 32 } ImgOperation;

/** Counts how often each value occurs in a square of 256 x 256 pixels, limited to the picture, that moves over an 8-bit DIB.
 *  After short moves only the pixels that enter or leave the square are counted.
 *    IMG_ALLOCATE  returns a new histogram block: 256 counters of 16 bits. Counters wrap: 65,536 pixels of one value give 0
 *    IMG_COMPUTE   counts the square and returns `histogram`. The thread remembers the last square that it counted, for any
 *                  picture and block, and does not count it again: start a new picture with IMG_ALLOCATE
 *    IMG_FREE      frees the block and returns NULL
 *  dib        IMG_COMPUTE: 8 bits, a 40-byte header. Pixel values are counted, not colours
 *  operation  an ImgOperation
 *  histogram  IMG_COMPUTE, IMG_FREE: a block from IMG_ALLOCATE
 *  origin     IMG_COMPUTE: x and y of the square's upper left corner, y from the top; moved inside the picture
 *  error      receives 0 or the code of a failure; may be NULL. The thread's code is unchanged
 *  Returns the histogram block. NULL, code in `error`: IMG_E_MEMORY, IMG_E_PARAMETER (a null argument, a header of other than 40
 *  bytes), IMG_E_LOCK (not a handle), IMG_E_COMPRESSED, IMG_E_PIXEL_BITS (not 8 bits), IMG_E_DIB_SIZE.
 *  Owner: The caller frees the returned block with IMG_FREE or GlobalFree. */
VOREL_API HGLOBAL VORELCALL ComputeHistogram(HGLOBAL dib, int operation, HGLOBAL histogram, const int* origin, int* error);

/** Makes a lookup table of contrast and brightness.
 *    IMG_ALLOCATE  returns a new block of 256 bytes that maps each level to itself
 *    IMG_COMPUTE   sets entry i to the level i + contrast * (i - mean) / 255 + brightness, between 0 and 255, and returns `table`.
 *                  On a thread that never allocated a table it writes nothing
 *    IMG_FREE      frees the block and returns its handle, which is no longer valid
 *  histogram   IMG_COMPUTE: contrast is centred on its mean level; 128 without a histogram or for an empty one
 *  operation   an ImgOperation
 *  table       IMG_COMPUTE, IMG_FREE: a block from IMG_ALLOCATE
 *  contrast    0 leaves levels unchanged; -255 flattens the table to the mean; any number
 *  brightness  levels to add; any number
 *  error       receives 0 or the code of a failure; may be NULL. The thread's code is unchanged
 *  Returns the table's handle. NULL, code in `error`: IMG_E_MEMORY, IMG_E_PARAMETER (no table).
 *  Owner: The caller frees the returned block with IMG_FREE or GlobalFree. */
VOREL_API HGLOBAL VORELCALL ComputeLUT(HGLOBAL histogram, int operation, HGLOBAL table, int contrast, int brightness,
                                       int* error);

/** Maps an 8-bit DIB through a lookup table. Each pixel becomes the table's level for the mean of its colour,
 *  (blue + green + red + 1) / 3, and the entries of the colour table become a grey ramp from black to white.
 *  dib        8 bits, a 40-byte header
 *  table      a block of 256 bytes
 *  make_copy  0 changes the DIB itself and returns it; any other number returns a new DIB
 *  error      receives 0 or the code of a failure; may be NULL. The thread's code is unchanged
 *  Returns a DIB handle. NULL, code in `error`: the codes of ComputeHistogram; IMG_E_PARAMETER also without a table.
 *  Owner: A returned copy is the caller's (GlobalFree). Without one `dib` itself is changed and returned; free it once. */
VOREL_API HGLOBAL VORELCALL ApplyLUT(HGLOBAL dib, HGLOBAL table, int make_copy, int* error);

/** Changes brightness, then contrast, of the colours of a 4- or 8-bit DIB or of the pixels of a 24-bit one.
 *  dib                   4, 8 or 24 bits, a 40-byte header
 *  brightness, contrast  percent, -100 to 100. Contrast is centred on level 128
 *  Returns a DIB handle and sets the thread's code to 0. NULL: IMG_E_PARAMETER (null, another header, percentages out of range),
 *  IMG_E_LOCK, IMG_E_COMPRESSED, IMG_E_PIXEL_BITS (another depth), IMG_E_DIB_SIZE, IMG_E_MEMORY. */
VOREL_API HGLOBAL VORELCALL ColorBrightnessContrast(HGLOBAL dib, short brightness, short contrast);

/** Makes a 24-bit copy of an 8-bit DIB. biSizeImage is computed from the low 16 bits of the row length.
 *  dib  8 bits, a 40-byte header
 *  Returns a DIB handle and sets the thread's code to 0. NULL: IMG_E_NOTHING_TO_CONVERT (24 bits already), else as
 *  ColorBrightnessContrast. */
VOREL_API HGLOBAL VORELCALL Convert8to24(HGLOBAL dib);

/** Filters an 8-bit DIB, whose pixel values are assumed to be greys; the entries of the colour table become a grey ramp from black
 *  to white. Rows and columns at the edges are repeated beyond them.
 *  dib          8 bits, a 40-byte header
 *  make_copy    0 changes the DIB itself and returns it; any other number returns a new DIB
 *  type         1 the caller's kernel, 2 one from a file, 3 box blur, 4 weighted blur, 5 sharpen by four neighbours, 6 by eight
 *  size         of the kernel: 3 or 5; types 1 and 3 also 7
 *  kernel_file  type 2: size x size coefficients row by row, then the divisor, as 32-bit little-endian integers
 *  kernel       type 1: the same in memory
 *  error        receives 0 or the code of a failure; may be NULL. The thread's code is unchanged
 *  A kernel's first row applies to the row above in the picture, its first column to the left neighbour. Coefficients, and
 *  the sums of the positive and of the negative ones, are -127 to 127. Divisor 0 stands for the sum of all coefficients, or 1
 *  if that is 0. If a kernel has both signs, and for types 5 and 6, sums are limited to 0 to 255 before they are divided.
 *  Quotients keep their low 8 bits. With size 5, types 4 and 6 count the second pixel of each row once too often; see
 *  docs/behaviour.md.
 *  Returns a DIB handle. NULL, code in `error`: the codes of ComputeHistogram; IMG_E_PARAMETER also for another type or size, and
 *  for a kernel that is missing or out of bounds.
 *  Owner: A returned copy is the caller's (GlobalFree). Without one `dib` itself is changed and returned; free it once. */
VOREL_API HGLOBAL VORELCALL Convolve(HGLOBAL dib, int make_copy, int type, int size, LPCSTR kernel_file, const int* kernel,
                                     int* error);

/** Filters the intensity of a 24-bit DIB: the change that the filter makes is added to blue, green and red alike, within 0 to 255.
 *  dib                  24 bits, a 40-byte header
 *  make_copy            0 changes the DIB itself and returns it; any other number returns a new DIB
 *  intensity_mode       1 (8 blue + 15 green + 3 red) / 26; any other number the mean
 *  type, size           as for Convolve
 *  kernel_file, kernel  as for Convolve, but of 16-bit integers
 *  error                receives 0 or the code of a failure; may be NULL. The thread's code is unchanged
 *  Kernels are applied as by Convolve, except that sums are never limited before they are divided.
 *  Returns a DIB handle. NULL, code in `error`: the codes of Convolve; IMG_E_PIXEL_BITS means not 24 bits.
 *  Owner: A returned copy is the caller's (GlobalFree). Without one `dib` itself is changed and returned; free it once. */
VOREL_API HGLOBAL VORELCALL ColorConvolution(HGLOBAL dib, int make_copy, int intensity_mode, short type, int size,
                                             LPCSTR kernel_file, const short* kernel, int* error);

/** Makes a grey copy of 8 bits, or of 4 bits for a 4-bit DIB. 4 and 8 bits keep their pixels and get a grey colour table.
 *  dib       1, 4, 8 or 24 bits, a 40-byte header
 *  grade     1 bit: 0 plain, 1 smoothed over 3 x 3 pixels, 2 over 5 x 5 (in pictures below 6 rows over 3 x 3, below 4 not at all).
 *            Set bits become white whatever the colour table says. Smoothed pictures are shifted by 1 or 2 stored rows
 *  weighted  0 the mean of blue, green and red; any other number (8 red + 15 green + 3 blue) / 26; ignored for 1 bit
 *  Returns a DIB handle and sets the thread's code to 0. NULL: as ColorBrightnessContrast; IMG_E_PARAMETER for another grade. */
VOREL_API HGLOBAL VORELCALL ConvColorDIBtoGrayscale(HGLOBAL dib, int grade, int weighted);

/** Makes an 8-bit grey copy of a 1-bit DIB. Its colour table runs from white to black, so pixel values are darkness: bits
 *  of the darker colour become high values.
 *  dib    1 bit, a 40-byte header
 *  grade  as for ConvColorDIBtoGrayscale
 *  Returns a DIB handle and sets the thread's code to 0. NULL: IMG_E_COMPRESSED (also: not 1 bit, or not one plane), else as
 *  ConvColorDIBtoGrayscale. */
VOREL_API HGLOBAL VORELCALL ConvMonoDIBtoGrayscale(HGLOBAL dib, int grade);

/** Removes specks from a grey DIB of 1 or 8 bits, by the eight neighbours of each pixel. Edges are unchanged.
 *  dib    1 or 8 bits, every colour grey, a 40-byte header
 *  level  strength, 20 to 100. If colour 0 is black, 120 - level replaces it
 *         1 bit: a pixel with more set neighbours than level * 8 / 100 is set, one with fewer is cleared
 *         8 bits: a pixel takes the value of its neighbour of rank (120 - level) * 9 / 100, counted from the smallest
 *  mode   0 changes only pixels with fewer than four set neighbours (1 bit) or values below 5 and above 250 (8 bits); any other
 *         number changes all
 *  Returns a DIB handle; its block has the source's size. NULL, no code: not a DIB handle, another depth, a colour that is not
 *  grey, a level out of range, or memory is short. */
VOREL_API HGLOBAL VORELCALL CleanImage(HGLOBAL dib, int level, int mode);

/* ---- Black and white, and few colours ------------------------------------------------------------------------------- */

/*  The four functions reduce a DIB to fixed colours by error diffusion:
 *    1 bit   black and white, by luminance, (30 red + 59 green + 11 blue) / 100 (the weights of ITU-R BT.601, rounded)
 *    4 bits  red, green and blue independently on or off; pixels are 8 red + 4 green + 2 blue
 *    8 bits  eight reds, eight greens, four blues (3-3-2); DitherFS4 and DitherJJN only
 *  dib   4, 8 or 24 bits. Colour tables of 16 or 256 entries are assumed whatever biClrUsed states, and neither header size nor
 *        compression is checked
 *  bits  of the result, fewer than those of the DIB: 1 or 4; DitherFS4 and DitherJJN also 8
 *  Returns a DIB handle and sets the thread's code to 0. NULL: IMG_E_PARAMETER (other bits), IMG_E_DITHER_PARAMETER (bits not below
 *  the depth of the DIB, or another depth; one lock on the DIB remains), IMG_E_MEMORY (a lock may remain too). For a null handle
 *  DitherFS4 stores IMG_E_PARAMETER and the others IMG_E_LOCK; for other invalid ones DitherFS4 stores IMG_E_LOCK and the others
 *  IMG_E_MEMORY. */

/** Spreads errors over four neighbours, after Floyd and Steinberg (1976), except that a share for the row below replaces
 *  earlier ones. */
VOREL_API HGLOBAL VORELCALL DitherFS4(HGLOBAL dib, int bits);

/** Spreads errors over twelve neighbours, after Jarvis, Judice and Ninke (1976), except that a share for the second row below
 *  replaces earlier ones. */
VOREL_API HGLOBAL VORELCALL DitherJJN(HGLOBAL dib, int bits);

/** Moves the brightness of each block of 2 x 2 pixels into its brightest pixels; the remainder goes to the right.
 *  bits  of the result, fewer than those of the DIB: 1 or 4 */
VOREL_API HGLOBAL VORELCALL DitherSmooth(HGLOBAL dib, int bits);

/** Like DitherSmooth, but half of the remainder goes to the right, which keeps edges sharper.
 *  bits  of the result, fewer than those of the DIB: 1 or 4 */
VOREL_API HGLOBAL VORELCALL DitherSharp(HGLOBAL dib, int bits);

/** Makes a black and white copy of a DIB.
 *  dib         4, 8 or 24 bits
 *  method      0 threshold: luminance above 128 becomes white; 1 error diffusion as in DitherJJN, with other weights for the second
 *              row below; 2 ordered, by a 16 x 16 matrix of thresholds (Bayer, 1973)
 *  brightness  added to the luminance of each pixel, within 0 to 255
 *  error       receives the code of a failure; not written on success. May be NULL. The thread's code is unchanged
 *  Rows of 24-bit pictures are wrongly assembled from several source rows, and the picture ends early; convert them to grey first.
 *  Returns a DIB handle. NULL: IMG_E_PARAMETER (null, another method; another depth, which leaves a lock on the DIB),
 *  IMG_E_MEMORY (also: not a DIB handle). */
VOREL_API HGLOBAL VORELCALL Halftone(HGLOBAL dib, WORD method, int brightness, WORD* error);

/* ---- Run-length compression ---------------------------------------------------------------------------------------- */

/*  Both functions set the thread's code to 0 on success. They assume a
 *  colour table of 16 or 256 entries whatever biClrUsed states: pixels or codes begin at byte 104 of a 4-bit block and
 *  1064 of an 8-bit one, and the whole table is copied. The header is copied too, except for biCompression and
 *  biSizeImage. A width or height of 0 is allowed. */

/** Compresses a DIB: 8 bits to BI_RLE8, 4 bits to BI_RLE4. biSizeImage becomes the number of bytes of codes.
 *  dib  uncompressed, 8 or 4 bits per pixel; biSizeImage is ignored
 *  In an 8-bit picture a row's codes may end with one pixel more than the row has, and in a 4-bit one of odd width too;
 *  readers drop the extra pixel. Codes of noise are up to twice as long as the pixels, and longer in pictures 1 pixel wide.
 *  Returns a DIB handle. NULL: IMG_E_PARAMETER (not a DIB handle, a header of other than 40 bytes, compressed, another depth,
 *  a negative width or height), IMG_E_MEMORY (also if the codes could need 2 GB, whether or not they do). */
VOREL_API HGLOBAL VORELCALL CompressDIB(HGLOBAL dib);

/** Expands a run-length compressed DIB. Pixels that the codes leave out are 0; biSizeImage becomes the size of the rows.
 *  dib  8 bits with BI_RLE8, 4 bits with BI_RLE4, or any depth with a biCompression above 2, which is read as BI_RLE4 with
 *       1 << biBitCount entries in the colour table. biSizeImage must not be 0 but does not limit the codes; they end at the
 *       end-of-bitmap code or at the end of the block
 *  Pixels outside the picture are dropped. Once 8-bit codes have filled a row, a delta counts its columns from the
 *  row's start.
 *  Returns a DIB handle. NULL: IMG_E_PARAMETER (not a DIB handle, a header of other than 40 bytes, uncompressed, another
 *  depth, biSizeImage 0, a negative width or height), IMG_E_MEMORY (also for sizes too large for a block). */
VOREL_API HGLOBAL VORELCALL ExpandCompressedDIB(HGLOBAL dib);

/* ---- Scrolling display (Windows only) ------------------------------------------------------------------------------ */

/** Options of a display. */
#define IMG_DISPLAY_FIT 0x0008u        /**< scaled to the client area; keeps the proportions given by the resolutions */
#define IMG_DISPLAY_INVERTED 0x0020u   /**< colours drawn inverted */
#define IMG_DISPLAY_RESOLUTION 0x0040u /**< scaled by the resolution of the screen over that of the image */
#define IMG_DISPLAY_CENTRE 0x0080u     /**< centred in the client area */
#define IMG_DISPLAY_STRETCH 0x0100u    /**< fills the client area; does not keep the proportions */
#define IMG_DISPLAY_NO_VSCROLL 0x0200u /**< no vertical scroll bar */
#define IMG_DISPLAY_NO_HSCROLL 0x0400u /**< no horizontal scroll bar */
#define IMG_DISPLAY_AS_BITMAP 0x0800u  /**< when the display starts: make a device bitmap of the DIB and paint from it */
#define IMG_DISPLAY_FIT_WIDTH 0x1000u  /**< as wide as the client area; keeps the proportions */

/** The image, window and mapping of a display. Logical units are image pixels, device units are window pixels. */
typedef struct ImgDisplayLayout {
  int originLogicalX, originLogicalY;                 /**< the image point at the upper left corner of the client area */
  int imageOriginDeviceX, imageOriginDeviceY;         /**< the window point of image point (0, 0) */
  UINT flags;                                         /**< IMG_DISPLAY_...; BZoomEnd also sets 0x0004 */
  int hScrollMin, vScrollMin, hScrollMax, vScrollMax; /**< device units; -1 if there is nothing to scroll */
  int hScrollPos, vScrollPos;
  int zoomViewportX, zoomWindowX, zoomViewportY, zoomWindowY; /**< zoom ratios, viewport to window; below 1 counts as 1 */
  int centreOffsetX, centreOffsetY; /**< device units; negative for an image smaller than the window */
  int imageWidth, imageHeight;
  UINT bitsPerPixel;
  int clientLeft, clientTop, clientRight, clientBottom;
  int windowOriginX, windowOriginY; /**< logical units */
  int screenDpiX, screenDpiY;
  int imageDpiX, imageDpiY;
} ImgDisplayLayout;

/** A rubber-band zoom. Allocated by the caller, filled by BZoomStart. */
typedef struct ImgZoomTracker {
  int mode;                                                           /**< see BZoomStart */
  int resultViewportX, resultWindowX, resultViewportY, resultWindowY; /**< the new ratio */
  int resultLeft, resultTop;                                          /**< the image point for the upper left corner */
  int screenCoordinates;                                              /**< whether points are passed in screen coordinates */
  int anchorX, anchorY;                                               /**< the start point, client coordinates */
  int cornerX, cornerY;                                               /**< the band's opposite corner */
  int startViewportX, startWindowX, startViewportY, startWindowY;     /**< the ratio at the start */
  int bandShown;
} ImgZoomTracker;

/** Entries of a table of zoom steps: the number of values (1 to 10), then the values, strictly increasing from the base. */
#define IMG_ZOOM_TABLE_ENTRIES 11

/** Replaces the calling thread's zoom steps.
 *  base     the value that stands for 1 in a ratio, 1 to 1000; 10 in a new thread
 *  enlarge  viewport values of enlarging ratios (enlarge : base); NULL keeps them. In a new thread 5; 10, 20, 40, 60, 80
 *  reduce   window values of reducing ratios (base : reduce); NULL keeps them. In a new thread 5; 10, 15, 30, 40, 50
 *  Tables have IMG_ZOOM_TABLE_ENTRIES entries. Entries beyond the count are stored but not used.
 *  Returns 1. 0, no code: the base or a table is invalid; nothing is changed. */
VOREL_API int VORELCALL BZoomSetScaleSteps(int base, const int* enlarge, const int* reduce);

/** Copies the calling thread's zoom steps.
 *  enlarge, reduce  take IMG_ZOOM_TABLE_ENTRIES entries; may be NULL
 *  Returns the base. Errors: None. */
VOREL_API int VORELCALL BZoomGetScaleSteps(int* enlarge, int* reduce);

#ifdef _WIN32

/** The state of a display. The caller allocates one per window and passes it to every call; calls that share one must not run
 *  at the same time. It has at least the 142 bytes that DisplayWmCreate clears; on 64-bit Windows, where handles are longer, 154. */
typedef struct ImgDisplayState {
  ImgDisplayLayout layout;
  HPALETTE palette; /**< used for drawing */
  HGLOBAL dib;      /**< the DIB shown; the caller's; NULL if a bitmap is shown */
  HBITMAP bitmap;   /**< the bitmap drawn: the caller's, or made from the DIB */
  WORD ownership;   /**< bit 0: the library owns the bitmap; bit 1: it owns the palette */
  BYTE reserved[8];
} ImgDisplayState;

/*  A window shows an image by forwarding its messages: DisplayWmCreate on WM_CREATE, DisplayStart or DisplayDIBStart for each new
 *  image, zoom ratio or option, DisplayWmPaint on WM_PAINT, DisplayWmSize, DisplayWmHorzScroll and DisplayWmVertScroll on
 *  WM_SIZE, WM_HSCROLL and WM_VSCROLL, DisplayWmDestroy on WM_DESTROY. DIB, bitmap and palette must live as long as they are shown.
 *  Handlers return 0; those for sizes and scrolling return 1 for a null window.
 *  Errors: No code. Without a state these functions do nothing, except that DisplayWmPaint validates the window. */

/** Clears the first 142 bytes of a state, on 64-bit Windows 154: everything up to the end of `reserved`. Returns 0. */
VOREL_API LRESULT VORELCALL DisplayWmCreate(HWND window, WPARAM wParam, LPARAM lParam, ImgDisplayState* state);

/** Starts showing a device bitmap.
 *  bitmap   not selected into a device context
 *  palette  may be NULL
 *  dpi      two numbers, across and down, the bitmap's resolution; NULL for the screen's
 *  view     four numbers, in and out; may be NULL. In: the first two are the image point for the upper left corner. Out:
 *           originLogicalX, originLogicalY, imageOriginDeviceX, imageOriginDeviceY
 *  zoom     viewport X, window X, viewport Y, window Y: image pixels are drawn viewport / window times as large; NULL for 1
 *  flags    IMG_DISPLAY_... A fitted or stretched image has scroll bars unless the flags exclude them
 *  Returns the stored flags; 0 without a state.
 *  Owner: Bitmap and palette stay the caller's and must live as long as they are shown. */
VOREL_API UINT VORELCALL DisplayStart(HWND window, HBITMAP bitmap, HPALETTE palette, const int* dpi, int* view,
                                      const int* zoom, UINT flags, ImgDisplayState* state);

/** Starts showing a DIB, at the resolution in its header or, if it states none, the screen's.
 *  dib    any depth that the system draws, a 40-byte header
 *  view   as for DisplayStart; without it both scroll positions start at 0
 *  zoom   as for DisplayStart
 *  flags  as for DisplayStart
 *  Returns `flags`; 0 without a state.
 *  Owner: The DIB stays the caller's and must live as long as it is shown. DisplayWmDestroy deletes the bitmap and palette made of
 *  it. */
VOREL_API UINT VORELCALL DisplayDIBStart(HWND window, HGLOBAL dib, int* view, const int* zoom, UINT flags,
                                         ImgDisplayState* state);

/** Handles a new window size: computes the layout again and updates the scroll bars. Repaints nothing.
 *  Returns 0; 1 without a window. */
VOREL_API LRESULT VORELCALL DisplayWmSize(HWND window, WPARAM wParam, LPARAM lParam, ImgDisplayState* state);

/** Scroll by the code in the low word of wParam. A line is 8 window pixels or, if larger, a whole group of image pixels; a page is
 *  half the client area.
 *  Returns 0; 1 without a window. */
VOREL_API LRESULT VORELCALL DisplayWmHorzScroll(HWND window, WPARAM wParam, LPARAM lParam, ImgDisplayState* state);
VOREL_API LRESULT VORELCALL DisplayWmVertScroll(HWND window, WPARAM wParam, LPARAM lParam, ImgDisplayState* state);

/** Scrolls to a position.
 *  position  two numbers, horizontal and vertical, in the units of hScrollPos and vScrollPos
 *  Returns 0; 1 without a window or position. */
VOREL_API LRESULT VORELCALL DisplaySetScrollPos(HWND window, ImgDisplayState* state, const int* position);

/** Handles WM_PAINT: calls BeginPaint and EndPaint, draws the visible part of the image and fills the area around it with
 *  the brush of the window class. Without a state it only validates the window.
 *  Returns 0. */
VOREL_API LRESULT VORELCALL DisplayWmPaint(HWND window, ImgDisplayState* state);

/** Deletes the bitmap and palette that the state owns.
 *  Returns 0. Owner: What the caller passed to DisplayStart or DisplayDIBStart stays the caller's. */
VOREL_API LRESULT VORELCALL DisplayWmDestroy(HWND window, WPARAM wParam, LPARAM lParam, ImgDisplayState* state);

/** Draw the image onto any device context as the window shows it.
 *  dc  the device context
 *  Return the stored flags; 0 without a state. */
VOREL_API UINT VORELCALL DisplayImageDC(HDC dc, ImgDisplayState* state);
VOREL_API UINT VORELCALL DisplayDIBImageDC(HDC dc, ImgDisplayState* state);

/** Sets the mapping of a display on a device context, so that the caller can draw in image pixels.
 *  dc  the device context */
VOREL_API void VORELCALL MapDisplayDC(HDC dc, ImgDisplayState* state);

/** Get and set the low-memory switch of the process, initially 0. If it is not 0, DisplayDIBImage and DisplayCPPImage scale
 *  the visible part of DIBs of 1, 4, 8 and 24 bits themselves instead of having the system stretch the whole DIB. This takes less
 *  memory and, for large pictures shown small, less time.
 *  value  the new value; any number
 *  Return the value, SetLowMemStretch the previous one. Errors: None. */
VOREL_API int VORELCALL GetLowMemStretch(void);
VOREL_API int VORELCALL SetLowMemStretch(int value);

/** Paints a DIB without a state, from WM_PAINT: calls BeginPaint and EndPaint, and shows or hides the scroll bars of the window.
 *  scroll  four numbers; the last two are the scroll positions, in image pixels from 0 to the image's size. NULL for 0
 *  zoom    as for DisplayStart; may be NULL. The image is drawn at its own resolution times this
 *  flags   IMG_DISPLAY_FIT (no scroll bars) and IMG_DISPLAY_INVERTED
 *  Errors: No code; nothing is painted for an invalid window or DIB. */
VOREL_API void VORELCALL DisplayDIBImage(HWND window, HGLOBAL dib, const int* scroll, const int* zoom, WORD flags);

/** Paints a device bitmap without a state, as DisplayDIBImage paints a DIB, at the screen's resolution.
 *  palette  used for drawing; may be NULL
 *  scroll   as for DisplayDIBImage
 *  zoom     as for DisplayStart; may be NULL
 *  flags    as for DisplayDIBImage
 *  Errors: No code; nothing is painted for an invalid window or bitmap. */
VOREL_API void VORELCALL DisplayImage(HWND window, HBITMAP bitmap, HPALETTE palette, const int* scroll, const int* zoom,
                                      WORD flags);

/*  Painting without a state, with working scroll bars.
 *  scroll  four numbers that the caller keeps for each window, initially 0: the ends of the horizontal and vertical range (-1 if
 *          nothing is scrolled out of view) and the two positions, all in image pixels
 *  zoom    as for DisplayDIBImage
 *  flags   as for DisplayDIBImage
 *  Errors: No code; without a window, or without `scroll` where it is changed, nothing happens. */

/** Paints a DIB from WM_PAINT, as DisplayDIBImage does. */
VOREL_API void VORELCALL DisplayCPPImage(HWND window, HGLOBAL dib, const int* scroll, const int* zoom, WORD flags);

/** Sets ranges and scroll bars for a new image, ratio or window size, and moves the positions into their ranges. */
VOREL_API void VORELCALL DisplayCPPSize(HWND window, HGLOBAL dib, int* scroll, const int* zoom, WORD flags);

/** Scroll as DisplayWmHorzScroll does, in image pixels, and repaint the window. */
VOREL_API void VORELCALL DisplayCPPHScroll(HWND window, WPARAM wParam, LPARAM lParam, HGLOBAL dib, int* scroll,
                                           const int* zoom, WORD flags);
VOREL_API void VORELCALL DisplayCPPVScroll(HWND window, WPARAM wParam, LPARAM lParam, HGLOBAL dib, int* scroll,
                                           const int* zoom, WORD flags);

/* ---- Interactive zooming (Windows only) ----------------------------------------------------------------------------- */

/*  Errors: No code. Without a tracker, or a state where there is one, these functions do nothing. */

/** Begins a zoom.
 *  start              the mouse position; NULL for (0, 0)
 *  current            the current ratio: viewport X, window X, viewport Y, window Y as left, top, right, bottom; NULL for 1
 *  mode               0x11 to 0x15 capture the mouse and show a rubber band, 0x21 to 0x25 do not. The last digit: 1 keeps the
 *                     ratio and moves the image, 2 is a step larger, 3 a step smaller, 4 a little larger, 5 a little smaller
 *  screenCoordinates  points of this zoom are in screen coordinates if not 0, else in client coordinates */
VOREL_API void VORELCALL BZoomStart(HWND window, const POINT* start, const RECT* current, int mode, ImgZoomTracker* tracker,
                                    BOOL screenCoordinates);

/** Moves the band to the mouse position. It appears when the mouse is at least 6 pixels from the start on both axes. Draws with
 *  R2_NOTXORPEN.
 *  mouse  its position */
VOREL_API void VORELCALL BZoomUpdate(HWND window, const POINT* mouse, ImgZoomTracker* tracker);

/** Ends a zoom: erases the band and computes the ratio and the image point in the tracker's result fields, for DisplayStart or
 *  DisplayDIBStart. A dragged rectangle fills the window; without one the mode decides.
 *  end  the mouse position; NULL without a mouse
 *  With `end` the state gets the new ratio, loses IMG_DISPLAY_FIT and IMG_DISPLAY_FIT_WIDTH, and gets flag 0x0004. The
 *  image point is computed for the size shown before these flags are cleared. */
VOREL_API void VORELCALL BZoomEnd(HWND window, const POINT* end, ImgZoomTracker* tracker, ImgDisplayState* state);

/** Zooms by a step without the mouse: BZoomStart and BZoomEnd in one call.
 *  current  as for BZoomStart
 *  mode     0x21 to 0x25, as for BZoomStart; 0x11 to 0x15 do nothing */
VOREL_API void VORELCALL BZoomStep(HWND window, const RECT* current, int mode, ImgZoomTracker* tracker,
                                   ImgDisplayState* state);

/** A window that shows part of a picture without a display state. */
typedef struct ImgScreenZoom {
  int screenDpiX, screenDpiY; /**< of the screen; if they differ, picture pixels are still drawn square */
  RECT client;                /**< the area that shows the picture, client coordinates */
  RECT zoom;                  /**< the part of the picture that fills `client`, in picture pixels */
} ImgScreenZoom;

/** Do the same as BZoomEnd and BZoomStep for a window with an ImgScreenZoom. Its `zoom` gets the new part of the picture,
 *  the tracker the upper left corner of that part.
 *  end      the mouse position; NULL without a mouse
 *  current  as for BZoomStart
 *  mode     as for BZoomStep
 *  state    an ImgScreenZoom of the caller */
VOREL_API void VORELCALL BZoomScreenEnd(HWND window, const POINT* end, ImgZoomTracker* tracker, ImgScreenZoom* state);
VOREL_API void VORELCALL BZoomScreenStep(HWND window, const RECT* current, int mode, ImgZoomTracker* tracker,
                                         ImgScreenZoom* state);

/** Lets the user drag a rectangle and computes the ratio at which it fills the window, at most 5. Runs until the left button is
 *  released, then repaints the window. If the start is outside the client area, it beeps and
 *  changes nothing.
 *  start  as in the lParam of a mouse message: x in the low word, y in the high word
 *  zoom   four numbers: viewport X, window X, viewport Y, window Y; in: the current ratio, out: the new one, in hundredths
 *  Errors: No code; without `zoom` nothing happens. */
VOREL_API void VORELCALL Zoom(HWND window, LPARAM start, int* zoom);

/* ---- Magnifying lens (Windows only) --------------------------------------------------------------------------------- */

/*  There is one lens per process; use it from one thread. Errors: No code; invalid windows and bitmaps do nothing. */

/** Sets the size of the lens, initially 180 x 80. A running lens keeps its bitmap until the next start.
 *  width, height  in pixels, including a frame of 4 pixels on each side
 *  Returns 1. */
VOREL_API int VORELCALL M_SetSizes(int width, int height);

/** Return the width and the height set for the lens, in pixels, including its frame. */
VOREL_API int VORELCALL M_GetWidth(void);
VOREL_API int VORELCALL M_GetHeight(void);

/** Starts the lens: takes a snapshot of the client area and hides the mouse cursor.
 *  palette  used for drawing; may be NULL
 *  Returns 1. Owner: The palette stays the caller's and must live until M_StopMagnify. */
VOREL_API int VORELCALL M_StartMagnify(HWND window, HPALETTE palette);

/** Stops the lens and restores the covered area and the cursor. Does nothing if no lens runs. Returns 1. */
VOREL_API int VORELCALL M_StopMagnify(void);

/** Computes the part of a bitmap that fills the lens.
 *  x, y    the bitmap point for the middle of the lens
 *  zoom    numerator X, denominator X, numerator Y, denominator Y. Ratios below 1 are replaced by 10 / 10, in place
 *  source  receives the rectangle
 *  Returns 1. 0, no code: a null pointer, or either of the last two numbers is 0. */
VOREL_API int VORELCALL M_CalcRect(int x, int y, int* zoom, RECT* source);

/** Draws a rectangle of a bitmap into the lens; parts outside the bitmap are grey. Does nothing unless the lens runs.
 *  source         the bitmap
 *  x, y           the rectangle's upper left corner, in bitmap pixels
 *  width, height  its size, in bitmap pixels */
VOREL_API void VORELCALL M_StretchBitmap(HBITMAP source, int x, int y, int width, int height);

/** Draws the lens and restores the area that it covered before. Does nothing unless the lens runs.
 *  x, y  the lens's upper left corner, in client coordinates */
VOREL_API void VORELCALL M_CopyBitmap(HWND window, int x, int y);

/* ---- Metafiles (Windows only) ---------------------------------------------------------------------------------------- */

/** Draws a metafile onto a white bitmap of the screen's format.
 *  metafile       an HMETAFILE, or an HENHMETAFILE
 *  enhanced       0 for an HMETAFILE
 *  width, height  pixels, at least 1. If a bitmap of this size cannot be created, the size is halved until it can; the bitmap then
 *                 holds the upper left part of a picture of the requested size
 *  Returns a bitmap for DeleteObject; a white one for an invalid metafile. NULL: IMG_E_MEMORY (also for a size below 1). */
VOREL_API HBITMAP VORELCALL DrawMetaFileIntoBitmap(HANDLE metafile, int width, int height, BOOL enhanced);

/** Loads a metafile as a bitmap: a Windows metafile with or without a placeable header, or an enhanced one.
 *  Its size comes from the placeable header, or from bounds and frame of the enhanced one, at the screen's resolution; it is five
 *  inches square if no size is stated or the stated size makes no pixel. A Windows metafile is drawn up to its first damaged
 *  record; an enhanced metafile with a damaged record is refused.
 *  Returns a bitmap for DeleteObject. NULL: IMG_E_FILE_IO, IMG_E_MEMORY, IMG_E_CREATE_METAFILE; no code if the file cannot be
 *  opened. */
VOREL_API HBITMAP VORELCALL LoadMetaFileIntoBitmap(LPCSTR path);

/** Save a picture as a Windows metafile with a placeable header, or as an enhanced metafile, replacing the file. An argument
 *  that is no picture leaves an existing file unchanged.
 *  Return 1. Errors: The result is 1 after a failure too. A palette that cannot be created leaves IMG_E_CREATE_PALETTE. */
VOREL_API BOOL VORELCALL SaveDIBIntoMetaFile(LPCSTR path, HGLOBAL dib);
VOREL_API BOOL VORELCALL SaveDIBIntoEnhMetaFile(LPCSTR path, HGLOBAL dib);
VOREL_API BOOL VORELCALL SaveBitmapIntoMetaFile(LPCSTR path, HBITMAP bitmap);
VOREL_API BOOL VORELCALL SaveBitmapIntoEnhMetaFile(LPCSTR path, HBITMAP bitmap);

/** Draw the metafile picture on the clipboard at the resolution of the owner's window.
 *  owner  a window, which opens the clipboard
 *  Return a device bitmap, or a DIB handle. NULL: IMG_E_CLIPBOARD (the clipboard cannot be opened; a message box
 *  reports it), IMG_E_MEMORY (no metafile picture, or one that cannot be drawn; a message box reports the second); no code for
 *  an invalid window. The second function leaves IMG_E_CREATE_PALETTE on a display without a palette although it succeeds. */
VOREL_API HBITMAP VORELCALL PlaceMetaFileIntoBMPFromCLP(HWND owner);
VOREL_API HGLOBAL VORELCALL PlaceMetaFileIntoDIBFromCLP(HWND owner);

/* ---- Text files and clipboard files (Windows only) ------------------------------------------------------------------- */

/** Draws a text file black on white, in the system font, in a bitmap of the text's size.
 *  ansi  0: the text is in the OEM code page
 *  A text too high for a bitmap is cut off, and a message box reports it. A zero byte ends the text.
 *  Returns a monochrome bitmap for DeleteObject and sets the thread's code to 0 once the file is read, whether or not the text
 *  can be drawn. NULL: IMG_E_OPEN_FILE, IMG_E_MEMORY, IMG_E_FILE_IO. */
VOREL_API HBITMAP VORELCALL LoadASCIIFile(LPCSTR path, BOOL ansi);

/** Draws an ANSI text in a memory block as LoadASCIIFile does.
 *  text  the handle of the block; its last byte becomes 0
 *  Returns a monochrome bitmap for DeleteObject. NULL: IMG_E_MEMORY (also: not a handle), IMG_E_CREATE_DC.
 *  Owner: The block stays the caller's. */
VOREL_API HBITMAP VORELCALL LoadASCIIIntoBitmap(HGLOBAL text);

/** Loads a picture from a clipboard file.
 *  format  CF_TEXT, CF_METAFILEPICT or CF_DIB are drawn into a device bitmap for DeleteObject; CF_BITMAP is returned as raw
 *          bytes of the file in a memory block for GlobalFree
 *  Returns the bitmap or block. NULL: IMG_E_OPEN_FILE, IMG_E_FORMAT (not a clipboard file), IMG_E_CLIPBOARD_FORMAT (no entry of
 *  this format, or an unsupported format), IMG_E_FILE_IO (the file is too short for its entry), IMG_E_MEMORY, the codes
 *  of the drawing functions; no code for a damaged metafile.
 *  Owner: The caller frees a returned bitmap with DeleteObject and a block with GlobalFree. */
VOREL_API HANDLE VORELCALL LoadClipboardFormat(LPCSTR path, WORD format);

/** Saves a device bitmap as a clipboard file with one CF_DIB entry, replacing the file.
 *  Returns 1. 0: IMG_E_OPEN_FILE, IMG_E_FILE_IO (incomplete write), the codes of ConvertBitmapToDIB. */
VOREL_API BOOL VORELCALL SaveClipboardFormat(LPCSTR path, HBITMAP bitmap);

#endif /* _WIN32 */

/* ---- Printing (Windows only) ----------------------------------------------------------------------------------------- */

/** How pages are laid out. Members are 0 or 1 except `copies`; the values in brackets apply without options.
 *
 *  A page of several copies is begun with StartPage and drawn once per copy, and ended once. Modern printers ignore the repeated
 *  StartPage and print one sheet; for more sheets, print the page again. With fewer than 1 copy there is no page.
 *  Jobs on a memory DC rarely work: modern systems refuse to start a document there (-1), or print empty pages. */
typedef struct ImgPrintOptions {
  int showDialog;         /**< without a printer DC: ask for printer and options (1); 0 takes the default printer */
  int centreVertically;   /**< (1) */
  int centreHorizontally; /**< (1) */
  int fitProportionally;  /**< as large as the page allows, in proportion (1); wins over stretchToPage */
  int copies;             /**< of each page (1) */
  int useMemoryDC;        /**< run the job on a memory DC compatible with the printer, unless that is monochrome (0) */
  int stretchToPage;      /**< fill the page, out of proportion (0) */
  int showPageProgress;   /**< show the current page in the cancel dialog (1) */
  int useImageDpi;        /**< size by the image's resolution (1); otherwise, or without one, one printer dot per pixel */
  int silent;             /**< neither cancel dialog nor abort procedure (0) */
} ImgPrintOptions;

#ifdef _WIN32

/*  A job runs on one thread: PrepareToPrint, PrintDIBPage for each page, EndPrint. PrintDIB and PrintImage make all of these
 *  calls. The printer cuts off parts of an image outside the page. The functions return codes and store none.
 *  owner         the owner window of the dialogs; may be NULL
 *  documentName  for dialogs and spooler; at most 255 bytes count
 *  options       an ImgPrintOptions; NULL for the defaults
 *  imageDpi      the resolution in dots per inch, two numbers, across and down; NULL for the header's. Below 1: unknown
 *  pageTag       not used
 *  dialog        the handle of the dialog
 *  message       the number of the message */

/** Begins a job, and shows the cancel dialog.
 *  printerDC     a device context. NULL: chosen in the "PRINTPAGE" dialog or, if
 *                options->showDialog is 0, the default printer's
 *  options       NULL for the defaults. Otherwise read, and updated to the options in force, including choices in the dialog
 *  pageCount     shown in the progress text
 *  Returns 0. Errors: IMG_E_NOTHING_TO_DO (the dialog was cancelled, or gave no DC), IMG_E_PRINTER_DC, 1 (the printer takes no
 *  bitmaps; its DC is deleted), -5 (no cancel dialog), the negative result of SetAbortProc, -1 (the document does not start).
 *  Call EndPrint after a failure too. Owner: The caller's `printerDC` is to be passed to EndPrint, which deletes it. */
VOREL_API int VORELCALL PrepareToPrint(HWND owner, HDC printerDC, ImgPrintOptions* options, LPCSTR documentName,
                                       int pageCount);

/** Prints a DIB as the next page. Once the job is cancelled nothing is printed, and the result is usually still 0:
 *  PrintAbortProc(NULL, 0) reports it. A DIB that is refused leaves the job as it was.
 *  dib               any depth that the system draws, a 40-byte header
 *  pageIndex         from 0; shown in the progress text
 *  xOffset, yOffset  move the image, in printer dots
 *  A page stays open until the next one or the end.
 *  Returns 0, also without a job. Errors: IMG_E_LOCK, IMG_E_FORMAT (the header), IMG_E_MEMORY; a negative result of the printer's
 *  escapes. */
VOREL_API int VORELCALL PrintDIBPage(HGLOBAL dib, int* imageDpi, int pageTag, int pageIndex, int xOffset, int yOffset);

/** Makes the next PrintDIBPage draw on the same sheet as the last one. Errors: None. */
VOREL_API void VORELCALL PrintPageContinue(void);

/** Ends page, document and job, after a failed preparation too. A second call does nothing.
 *  printerDC  the context that was passed to PrepareToPrint; may be NULL
 *  Returns 0. -1: the document cannot be ended, as after a cancelled job that the device has aborted.
 *  Owner: Deletes `printerDC` and the contexts that the job made or drew on. */
VOREL_API int VORELCALL EndPrint(HDC printerDC);

/** Prints a DIB as a job of one page, with PrepareToPrint, PrintDIBPage and EndPrint.
 *  printerDC  as for PrepareToPrint
 *  dib        as for PrintDIBPage
 *  Returns 0. Errors: The first other result of these functions. Owner: Deletes `printerDC`. */
VOREL_API int VORELCALL PrintDIB(HWND owner, HDC printerDC, HGLOBAL dib, LPCSTR documentName, int* imageDpi,
                                 ImgPrintOptions* options, int pageTag);

/** Prints a device bitmap as a job of one page: ConvertBitmapToDIB, then PrintDIB.
 *  printerDC  as for PrepareToPrint
 *  palette    as for ConvertBitmapToDIB
 *  Returns 0. Errors: 1 (the conversion fails; `printerDC` is not deleted), the results of PrintDIB. Owner: PrintDIB deletes
 *  `printerDC`. */
VOREL_API int VORELCALL PrintImage(HWND owner, HDC printerDC, HBITMAP bitmap, HPALETTE palette, LPCSTR documentName,
                                   int* imageDpi, ImgPrintOptions* options, int pageTag);

/** The abort procedure of a job: dispatches the thread's messages.
 *  dc      of the job; not used
 *  code    the spooler's code; any number but 0 cancels the job
 *  Returns TRUE; FALSE once the job is cancelled. Errors: None. */
VOREL_API BOOL VORELCALL PrintAbortProc(HDC dc, int code);

/** The procedures of the dialogs "PRINTCANCELDLGBOX" and "PRINTPAGE", for callers with templates of their own.
 *  In the first, message WM_USER + 1000 shows the text in lParam in control 121; every command
 *  cancels the job. The second works on the options of the thread's job; its dialog ends with a printer's DC or with 0.
 *  Return TRUE for messages that they handle. Errors: None. Owner: The caller deletes the printer's DC. */
VOREL_API INT_PTR VORELCALL PrintCancelDlgProc(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam);
VOREL_API INT_PTR VORELCALL PrintPageProc(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam);

/** Lets the user choose the default printer in the dialog "PRINTERSETUP", and set printers up: the settings hold for the
 *  thread's next job on the printer if PrepareToPrint makes the DC.
 *  Returns 1; 0 if the dialog is cancelled. -1, no code: the dialog cannot be created. */
VOREL_API int VORELCALL PrinterSetup(HWND owner);

/** The procedure of the dialog "PRINTERSETUP". Returns TRUE for messages that it handles. Errors: None. */
VOREL_API INT_PTR VORELCALL PrinterSetupProc(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam);

#endif /* _WIN32 */

#ifdef __cplusplus
}
#endif

#endif /* VOREL32_H */
