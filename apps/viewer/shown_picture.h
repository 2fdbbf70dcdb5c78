// A picture that is shown, with what makes showing it quick.
#pragma once

#include <memory>
#include <mutex>
#include <utility>

#include "common/picture.h"
#include "common/reductions.h"

namespace vorel::viewer {

class ShownPicture {
 public:
  explicit ShownPicture(programs::Picture shown) : picture(std::move(shown)) {}

  // Made when they are first asked for: pictures that are only kept need none.
  const programs::Reductions& reductions() const {
    std::call_once(once_, [this] { reductions_ = programs::Reductions(picture); });
    return reductions_;
  }

  const programs::Picture picture;  // in the form that the library works on

 private:
  mutable std::once_flag once_;
  mutable programs::Reductions reductions_;
};

// Never changes, so that windows, versions for undo and other threads can share it.
using SharedPicture = std::shared_ptr<const ShownPicture>;

inline SharedPicture share(programs::Picture picture) { return std::make_shared<const ShownPicture>(std::move(picture)); }

}  // namespace vorel::viewer
