#include "formats/image_file.h"

#include <algorithm>

#include <vorel32.h>

#include "dib/bitmap_file.h"
#include "formats/codec_module.h"
#include "formats/device_formats.h"
#include "formats/fax_set.h"
#include "formats/format.h"
#include "platform/file.h"

namespace vorel {
namespace {

// Page sets may list page sets of one plane. One that comes back to itself ends here.
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

// How each format is loaded. Formats without a line are not.
struct Loader {
  ImgFormat format;
  Result<HGLOBAL> (*load)(const LoadRequest& request);
};

constexpr Loader kLoaders[] = {
    {IMG_FORMAT_TIFF,
     [](const LoadRequest& r) {
       return loaded(call_codec<ImgLoadPage>("MERV32", "LoadTiffIntoDIB", r.path, r.page, nullptr));
     }},
    {IMG_FORMAT_PCX,
     [](const LoadRequest& r) { return loaded(call_codec<ImgLoadPicture>("ODAL32", "LoadPCXIntoDIB", r.path, r.status)); }},
    {IMG_FORMAT_DCX,
     [](const LoadRequest& r) {
       return loaded(call_codec<ImgLoadPage>("ODAL32", "LoadDCXIntoDIB", r.path, r.page, r.status));
     }},
    {IMG_FORMAT_GIF,
     [](const LoadRequest& r) {
       return loaded(call_codec<ImgLoadPage>("SUNE32", "LoadGIFIntoDIB", r.path, r.page, r.status));
     }},
    {IMG_FORMAT_TGA,
     [](const LoadRequest& r) { return loaded(call_codec<ImgLoadPicture>("BRIX32", "LoadTGAIntoDIB", r.path, nullptr)); }},
    {IMG_FORMAT_BITMAP, load_bitmap},
    {IMG_FORMAT_METAFILE, load_metafile_dib},
    {IMG_FORMAT_CLIPBOARD, load_clipboard_dib},
    {IMG_FORMAT_COLOR_FAX, load_page_set},
    {IMG_FORMAT_CALS,
     [](const LoadRequest& r) { return loaded(call_codec<ImgLoadPicture>("MERV32", "LoadCALSIntoDIB", r.path, nullptr)); }},
    {IMG_FORMAT_JPEG,
     [](const LoadRequest& r) { return loaded(call_codec<ImgLoadFile>("KALO32", "LoadJPEGIntoDIB", r.path)); }},
    {IMG_FORMAT_PNG,
     [](const LoadRequest& r) { return loaded(call_codec<ImgLoadPicture>("WERT32", "LoadPNGIntoDIB", r.path, r.status)); }},
    {IMG_FORMAT_ENHANCED_METAFILE, load_metafile_dib},
};

Result<BOOL> save_bitmap(const SaveRequest& request) {
  const auto saved = save_dib(request.path, request.dib);
  if (!saved) return saved.error();
  return BOOL{*saved};
}

// A file that is there already gains a page.
Result<BOOL> save_dcx_page(const SaveRequest& request) {
  int status = request.value;
  if (!name_exists(request.path)) call_codec<ImgMakeFile>("ODAL", "MakeDCXFile", request.path, &status);
  return call_codec<ImgSavePicture>("ODAL", "SaveDIBInDCXFormat", request.path, request.dib, &status);
}

// How each format is saved. Formats without a line are not. Where a saver takes a status variable it gets one of our own,
// which begins with the caller's value.
struct Saver {
  ImgFormat format;
  Result<BOOL> (*save)(const SaveRequest& request);
};

constexpr int kJpegQuality = 75;

constexpr Saver kSavers[] = {
    {IMG_FORMAT_TIFF,
     [](const SaveRequest& r) -> Result<BOOL> {
       return call_codec<ImgSaveTiff>("MERV", "SaveDIBInTiffFormat", r.path, r.dib, r.value, 1);
     }},
    {IMG_FORMAT_PCX,
     [](const SaveRequest& r) -> Result<BOOL> {
       int status = r.value;
       return call_codec<ImgSavePicture>("ODAL", "SaveDIBInPCXFormat", r.path, r.dib, &status);
     }},
    {IMG_FORMAT_DCX, save_dcx_page},
    {IMG_FORMAT_GIF,
     [](const SaveRequest& r) -> Result<BOOL> {
       int status = r.value;
       return call_codec<ImgSaveGif>("SUNE", "SaveDIBInGIFFormat", r.path, r.dib, r.option, &status);
     }},
    {IMG_FORMAT_TGA,
     [](const SaveRequest& r) -> Result<BOOL> {
       return call_codec<ImgSaveTga>("BRIX", "SaveDIBInTGAFormat", r.path, r.dib, r.value != 0 ? 1 : 0, 1);
     }},
    {IMG_FORMAT_BITMAP, save_bitmap},
    {IMG_FORMAT_METAFILE, save_windows_metafile},
    {IMG_FORMAT_CLIPBOARD, save_clipboard_dib},
    {IMG_FORMAT_CALS,
     [](const SaveRequest& r) -> Result<BOOL> {
       return call_codec<ImgSaveCals>("MERV", "SAVEDIBINCALSFORMAT", r.path, r.dib, 0, 0, 0);
     }},
    {IMG_FORMAT_JPEG,
     [](const SaveRequest& r) -> Result<BOOL> {
       return call_codec<ImgSaveJpeg>("KALO", "SaveDIBInJPEGFile", r.path, r.dib, kJpegQuality);
     }},
    {IMG_FORMAT_ENHANCED_METAFILE, save_enhanced_metafile},
};

template <class Handler, size_t kCount>
const Handler* handler_of(const Handler (&handlers)[kCount], int format) {
  const auto* found = std::ranges::find(handlers, format, [](const Handler& handler) { return int{handler.format}; });
  return found == std::end(handlers) ? nullptr : found;
}

}  // namespace

Result<HGLOBAL> load_image(const LoadRequest& request) {
  const ImgFormat format = recognise(read_file_start(request.path), request.path);
  if (const Loader* loader = handler_of(kLoaders, format)) return loader->load(request);
  report_status(request, Error::kFormat);
  return Error::kFormat;
}

Result<BOOL> save_image(int format, const SaveRequest& request) {
  const Saver* saver = handler_of(kSavers, format);
  return saver == nullptr ? Result<BOOL>(Error::kUnreported) : saver->save(request);
}

}  // namespace vorel
