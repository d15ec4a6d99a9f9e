#include "Vantrel/PhotoItem.h"

#include <array>

namespace {

constexpr std::array<std::string_view, 3> rawValues = {"unreviewed", "approved", "rejected"};

} // namespace

std::string_view rawValue(ReviewState state) {
    return rawValues[static_cast<std::size_t>(state)];
}

std::optional<ReviewState> reviewState(std::string_view text) {
    for (const auto state : {ReviewState::unreviewed, ReviewState::approved, ReviewState::rejected}) {
        if (rawValue(state) == text) {
            return state;
        }
    }
    return std::nullopt;
}
