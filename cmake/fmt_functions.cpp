// {fmt}'s functions that its headers only declare. The templates are those whose definitions no other file
// sees.
#include <fmt/format-inl.h>

FMT_BEGIN_NAMESPACE
namespace detail {

#ifndef FMT_STATIC_THOUSANDS_SEPARATOR
template locale_ref::locale_ref(const std::locale& locale);
template std::locale locale_ref::get<std::locale>() const;
#endif
template thousands_sep_result<char> thousands_sep_impl(locale_ref locale);
template char decimal_point_impl(locale_ref locale);
template dragonbox::decimal_fp<float> dragonbox::to_decimal(float number) noexcept;
template dragonbox::decimal_fp<double> dragonbox::to_decimal(double number) noexcept;

}  // namespace detail
FMT_END_NAMESPACE
