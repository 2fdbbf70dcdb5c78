// What saving takes from a picture without being asked to.
#pragma once

#include <string>
#include <vector>

#include "common/picture.h"
#include "common/saving.h"

namespace vorel::programs {

// Each as "what is lost; what to do". Pixels that a JPEG file only comes near to are no loss here: that is what it is for.
std::vector<std::string> losses_when_saved(const Picture& picture, const Saving& saving);

}  // namespace vorel::programs
