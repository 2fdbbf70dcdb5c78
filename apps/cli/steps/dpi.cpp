// The step dpi: states another resolution.
#include <memory>

#include "cli/extent.h"
#include "cli/step.h"

namespace vorel::cli {
namespace {

Change declare(Arguments& arguments) {
  arguments.explain(
      "The pixels stay, so the size on paper changes. \"vorel scale --dpi\" changes pixels and keeps the size.",
      "  vorel dpi scan.png scan300.png 300\n"
      "  vorel dpi fax.tif fax.tif 204x196 --overwrite");
  const auto dpi = std::make_shared<std::string>();
  arguments.required("DPI", *dpi, "N or XxY, dots per inch", dpi_is_wrong);
  return [dpi](Page& page) { state_dpi(page.picture, *dpi); };
}

}  // namespace

const Step kDpi{"dpi", "State another resolution; the pixels stay.", declare};

}  // namespace vorel::cli
