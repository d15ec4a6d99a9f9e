#pragma once

#include "Platform/FileURL.h"

#include <QUuid>

#include <functional>
#include <optional>
#include <string>
#include <string_view>

/// The mark that the user gives a photo.
enum class ReviewState {
    unreviewed, ///< not yet decided: the state of every photo at first
    approved,   ///< kept
    rejected,   ///< to be discarded
};

/// The text that stands for a state wherever it is written: "unreviewed", "approved" or "rejected".
std::string_view rawValue(ReviewState state);

/// The state that a text stands for; nothing for any other text, another case of the letters included.
std::optional<ReviewState> reviewState(std::string_view rawValue);

template <>
struct std::hash<ReviewState> {
    std::size_t operator()(ReviewState state) const noexcept {
        return std::hash<std::string_view>()(rawValue(state));
    }
};

/// One photo of the open folder. Only its state ever changes.
class PhotoItem {
public:
    /// An item with a fresh random identity.
    PhotoItem(const Platform::FileURL& url, ReviewState state)
        : m_id(QUuid::createUuid()), m_url(url), m_filename(url.lastPathComponent()), m_state(state) {}

    const QUuid& id() const { return m_id; }
    const Platform::FileURL& url() const { return m_url; }

    /// Last path component of the url, in bytes, case kept as on disk.
    const std::string& filename() const { return m_filename; }

    ReviewState state() const { return m_state; }
    void setState(ReviewState state) { m_state = state; }

private:
    QUuid m_id;
    Platform::FileURL m_url;
    std::string m_filename;
    ReviewState m_state;
};
