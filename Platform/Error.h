#pragma once

#include <QString>

#include <string_view>

namespace Platform {

/// What went wrong, in a sentence that a user can read.
class Error {
public:
    /// An error whose whole sentence is given.
    explicit Error(QString description) : m_description(std::move(description)) {}

    /// The error of a system call: what failed on which file or folder, and why.
    ///
    /// @param what    the failed deed with "%1" where the name belongs, such as "“%1” could not be moved"
    /// @param name    name of the file or folder, in bytes as the disk holds them
    /// @param code    errno of the failed call
    static Error ofSystemCall(const QString& what, std::string_view name, int code);

    /// One or more sentences, English whatever the locale, without a line feed.
    const QString& localizedDescription() const { return m_description; }

    /// errno of the system call that failed, or 0 where none did.
    int code() const { return m_code; }

private:
    QString m_description;
    int m_code = 0;
};

} // namespace Platform
