#include "formats/image_file.h"

#include <algorithm>

#include <vorel32.h>

#include "core/file_formats.h"
#include "dib/bitmap_file.h"
#include "formats/codec_module.h"
#include "formats/device_formats.h"
#include "formats/fax_set.h"
#include "formats/format.h"
#include "platform/file.h"

namespace vorel::formats {
namespace {

// The table numbers formats as the public header does.
static_assert(static_cast<int>(FormatCode::kTiff) == IMG_FORMAT_TIFF &&
              static_cast<int>(FormatCode::kTga) == IMG_FORMAT_TGA &&
              static_cast<int>(FormatCode::kColorFax) == IMG_FORMAT_COLOR_FAX &&
              static_cast<int>(FormatCode::kCals) == IMG_FORMAT_CALS &&
              static_cast<int>(FormatCode::kEnhancedMetafile) == IMG_FORMAT_ENHANCED_METAFILE);

// Page sets may list page sets of one plane. This limit ends a set that leads back to itself.
constexpr int kMostEnclosingSets = 8;

Result<HGLOBAL> loaded(HGLOBAL dib) {
  if (dib == nullptr) return Error::kUnreported;
  return dib;
}

Result<HGLOBAL> load_bitmap(const LoadRequest& request) { return released(load_dib(request.path)); }

Result<HGLOBAL> load_page_set(const LoadRequest& request) {
  if (request.enclosing_sets >= kMostEnclosingSets) return Error::kUnreported;
  return load_fax_page(request);
}

// Formats that the library loads and saves itself. The others use the modules that the table of formats names.
struct OwnFormat {
  FormatCode code;
  Result<HGLOBAL> (*load)(const LoadRequest& request);
  Result<BOOL> (*save)(const SaveRequest& request);  // null for formats that are not saved
};

Result<BOOL> save_bitmap(const SaveRequest& request) { return BOOL{VOREL_TRY(save_dib(request.path, request.dib))}; }

constexpr OwnFormat kOwnFormats[] = {
    {FormatCode::kBitmap, load_bitmap, save_bitmap},
    {FormatCode::kMetafile, load_metafile_dib, save_windows_metafile},
    {FormatCode::kClipboard, load_clipboard_dib, save_clipboard_dib},
    {FormatCode::kColorFax, load_page_set, nullptr},
    {FormatCode::kEnhancedMetafile, load_metafile_dib, save_enhanced_metafile},
};

const OwnFormat& own_format(FormatCode code) { return *std::ranges::find(kOwnFormats, code, &OwnFormat::code); }

HGLOBAL load_by_module(const FileFormat& format, const LoadRequest& r) {
  switch (format.load_arguments) {
    case LoadArguments::kNone: return call_codec<ImgLoadFile>(format.load, r.path);
    case LoadArguments::kStatus: return call_codec<ImgLoadPicture>(format.load, r.path, r.status);
    case LoadArguments::kNullStatus: return call_codec<ImgLoadPicture>(format.load, r.path, nullptr);
    case LoadArguments::kPageAndStatus: return call_codec<ImgLoadPage>(format.load, r.path, r.page, r.status);
    case LoadArguments::kPageAndNull: return call_codec<ImgLoadPage>(format.load, r.path, r.page, nullptr);
  }
  return nullptr;
}

// A saver that takes a status variable gets a copy of the caller's value.
BOOL save_by_module(const FileFormat& format, const SaveRequest& r) {
  constexpr int kFirstPage = 1, kWithFooter = 1, kJpegQuality = 75;
  int status = r.value;
  // An existing file gains a page.
  if (format.make && !name_exists(r.path)) call_codec<ImgMakeFile>(format.make, r.path, &status);
  switch (format.save_arguments) {
    case SaveArguments::kStatus: return call_codec<ImgSavePicture>(format.save, r.path, r.dib, &status);
    case SaveArguments::kOptionAndStatus: return call_codec<ImgSaveGif>(format.save, r.path, r.dib, r.option, &status);
    case SaveArguments::kCompressionAndPage: return call_codec<ImgSaveTiff>(format.save, r.path, r.dib, r.value, kFirstPage);
    case SaveArguments::kRunLengthAndFooter:
      return call_codec<ImgSaveTga>(format.save, r.path, r.dib, r.value != 0 ? 1 : 0, kWithFooter);
    case SaveArguments::kThreeZeros: return call_codec<ImgSaveCals>(format.save, r.path, r.dib, 0, 0, 0);
    case SaveArguments::kQuality: return call_codec<ImgSaveJpeg>(format.save, r.path, r.dib, kJpegQuality);
  }
  return FALSE;
}

}  // namespace

Result<HGLOBAL> load_image(const LoadRequest& request) {
  const FileFormat* format = format_of(recognise(read_file_start(request.path), request.path));
  if (format == nullptr) {
    report_status(request, Error::kFormat);
    return Error::kFormat;
  }
  return format->load ? loaded(load_by_module(*format, request)) : own_format(format->code).load(request);
}

Result<BOOL> save_image(int code, const SaveRequest& request) {
  const FileFormat* format = format_of(code);
  if (format == nullptr || format->saver != Saver::kLibrary) return Error::kUnreported;
  return format->save ? Result<BOOL>(save_by_module(*format, request)) : own_format(format->code).save(request);
}

}  // namespace vorel::formats
