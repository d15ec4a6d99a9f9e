#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace Platform {

// Any thread; nothing is shared between calls.

/// The rules of order for a user of this locale.
///
/// @param posixLocale  as setlocale() names it, such as "de_DE.UTF-8"
/// @return the name of a locale for the functions below: "" (the rules common to all languages) for "C" and
///         "POSIX", where there is no language and the plain order of bytes would be no order of names
std::string collationLocale(std::string_view posixLocale);

/// The same for the locale of this process.
std::string collationLocale();

/// The order of names in a file browser, by the rules of the user's language: letters without regard to case,
/// runs of digits by their value, so that IMG_2.jpg stands before IMG_10.jpg. Names are UTF-8; bytes that are
/// not count as U+FFFD.
std::weak_ordering localizedStandardCompare(
    std::string_view a, std::string_view b, const std::string& locale = collationLocale());

/// Indices into names in the order of localizedStandardCompare; names that compare equal keep their order.
/// Faster for many names than to sort by the comparison itself.
std::vector<std::size_t> localizedStandardOrder(
    const std::vector<std::string>& names, const std::string& locale = collationLocale());

} // namespace Platform
