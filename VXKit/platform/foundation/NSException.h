// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/VXKitExport.h>

#include <QString>

#include <exception>
#include <string>

/// Name of the exception that a programming error in an argument raises (a nil object put into an array, say).
inline constexpr const char* NSInvalidArgumentException = "NSInvalidArgumentException";
/// Name of the exception that an index beyond the end of a list raises.
inline constexpr const char* NSRangeException = "NSRangeException";
/// Name of the exception that a call raises at a moment at which it cannot be answered.
inline constexpr const char* NSInternalInconsistencyException = "NSInternalInconsistencyException";

/// A programming error, thrown where AppKit raises its exception of the same class.
///
/// Expected failures (a file that cannot be read) are never thrown; they are returned with an NSError.
class VXKIT_EXPORT NSException : public std::exception {
public:
    /// `name` says what kind of exception this is, `reason` what happened, for a person to read.
    NSException(const char* name, const QString& reason);
    ~NSException() override;

    [[nodiscard]] QString name() const { return m_name; }
    [[nodiscard]] QString reason() const { return m_reason; }

    /// Name and reason in one line, UTF-8.
    [[nodiscard]] const char* what() const noexcept override { return m_what.c_str(); }

private:
    QString m_name;
    QString m_reason;
    std::string m_what;
};
