// The part of fmt that is not in its headers, compiled once. The package has it as a shared library for this machine only, and
// the headers alone would compile it again in every file that formats.
#include <fmt/format-inl.h>

namespace fmt::detail {

template thousands_sep_result<char> thousands_sep_impl<char>(locale_ref);
template char decimal_point_impl<char>(locale_ref);
template dragonbox::decimal_fp<float> dragonbox::to_decimal<float>(float) noexcept;
template dragonbox::decimal_fp<double> dragonbox::to_decimal<double>(double) noexcept;

}  // namespace fmt::detail
