#pragma once

#include "Platform/Error.h"

#include <cassert>
#include <optional>
#include <utility>
#include <variant>

namespace Platform {

/// A value, or the Error that stood in its way. Reading the side that is not there is a programming error.
template <typename T>
class [[nodiscard]] Result {
public:
    Result(T value) : m_content(std::in_place_index<0>, std::move(value)) {}
    Result(Error error) : m_content(std::in_place_index<1>, std::move(error)) {}

    explicit operator bool() const { return m_content.index() == 0; }

    T& operator*() {
        assert(*this);
        return *std::get_if<0>(&m_content);
    }
    const T& operator*() const {
        assert(*this);
        return *std::get_if<0>(&m_content);
    }
    T* operator->() { return &**this; }
    const T* operator->() const { return &**this; }

    const Error& error() const {
        assert(!*this);
        return *std::get_if<1>(&m_content);
    }

private:
    std::variant<T, Error> m_content;
};

/// Success without a value, or the Error that stood in its way.
template <>
class [[nodiscard]] Result<void> {
public:
    Result() = default;
    Result(Error error) : m_error(std::move(error)) {}

    explicit operator bool() const { return !m_error; }

    const Error& error() const {
        assert(m_error);
        return *m_error;
    }

private:
    std::optional<Error> m_error;
};

} // namespace Platform
