#include "Platform/LocalizedStandardCompare.h"

#include <QtGlobal>

#include <unicode/coll.h>
#include <unicode/locid.h>
#include <unicode/uloc.h>

#include <algorithm>
#include <array>
#include <clocale>
#include <cstdint>
#include <memory>
#include <numeric>

namespace Platform {

namespace {

using CollatorPointer = std::unique_ptr<icu::Collator>;

CollatorPointer openCollator(const std::string& locale) {
    UErrorCode status = U_ZERO_ERROR;
    CollatorPointer collator(icu::Collator::createInstance(icu::Locale(locale.c_str()), status));
    if (U_FAILURE(status)) {
        status = U_ZERO_ERROR;
        collator.reset(icu::Collator::createInstance(icu::Locale::getRoot(), status));
    }
    if (U_SUCCESS(status)) {
        collator->setAttribute(UCOL_NUMERIC_COLLATION, UCOL_ON, status);
        collator->setAttribute(UCOL_STRENGTH, UCOL_SECONDARY, status); // accents count, case does not
    }
    if (U_FAILURE(status)) {
        qFatal("The Unicode library has no collation data: %s", u_errorName(status));
    }
    return collator;
}

/// Bytes that are not UTF-8 become U+FFFD.
icu::UnicodeString unicodeOf(std::string_view name) {
    return icu::UnicodeString::fromUTF8({name.data(), static_cast<std::int32_t>(name.size())});
}

/// Bytes whose plain order is the order of the names.
std::string sortKey(const icu::Collator& collator, std::string_view name) {
    const icu::UnicodeString text = unicodeOf(name);
    std::string key(128, '\0');
    const auto fill = [&] {
        return static_cast<std::size_t>(collator.getSortKey(
            text, reinterpret_cast<std::uint8_t*>(key.data()), static_cast<std::int32_t>(key.size())));
    };
    const std::size_t size = fill();
    const bool isWhole = size <= key.size();
    key.resize(size);
    if (!isWhole) {
        fill();
    }
    return key;
}

} // namespace

std::string collationLocale(std::string_view posixLocale) {
    const std::string_view language = posixLocale.substr(0, posixLocale.find_first_of(".@"));
    if (language.empty() || language == "C" || language == "POSIX") {
        return "";
    }
    std::array<char, ULOC_FULLNAME_CAPACITY> name = {};
    UErrorCode status = U_ZERO_ERROR;
    uloc_canonicalize(std::string(posixLocale).c_str(), name.data(), name.size(), &status);
    return U_SUCCESS(status) && status != U_STRING_NOT_TERMINATED_WARNING ? name.data() : "";
}

std::string collationLocale() {
    const char* locale = setlocale(LC_COLLATE, nullptr);
    return collationLocale(locale ? locale : "");
}

std::weak_ordering localizedStandardCompare(
    std::string_view a, std::string_view b, const std::string& locale) {
    UErrorCode status = U_ZERO_ERROR;
    const UCollationResult result = openCollator(locale)->compare(unicodeOf(a), unicodeOf(b), status);
    return static_cast<int>(result) <=> 0;
}

std::vector<std::size_t> localizedStandardOrder(
    const std::vector<std::string>& names, const std::string& locale) {
    const CollatorPointer collator = openCollator(locale);
    std::vector<std::string> keys;
    keys.reserve(names.size());
    for (const std::string& name : names) {
        keys.push_back(sortKey(*collator, name));
    }
    std::vector<std::size_t> order(names.size());
    std::iota(order.begin(), order.end(), 0);
    std::ranges::stable_sort(order, {}, [&](std::size_t index) -> const std::string& { return keys[index]; });
    return order;
}

} // namespace Platform
