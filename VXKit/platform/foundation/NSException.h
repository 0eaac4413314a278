// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/VXKitExport.h>
#include <VXKit/platform/foundation/NSPropertyList.h>

#include <QString>

#include <cstdint>
#include <exception>
#include <optional>
#include <string>
#include <vector>

/// Name of the exception that a programming error in an argument raises (a nil object put into an array, say).
inline constexpr const char* NSInvalidArgumentException = "NSInvalidArgumentException";
/// Name of the exception that an index beyond the end of a list raises.
inline constexpr const char* NSRangeException = "NSRangeException";
/// Name of the exception that a call raises at a moment at which it cannot be answered.
inline constexpr const char* NSInternalInconsistencyException = "NSInternalInconsistencyException";

/// Key in the user info of a reported exception: the lines of the stack that threw it, innermost first.
inline constexpr const char* NSStackTraceKey = "NSStackTraceKey";

/// A programming error, thrown where AppKit raises its exception of the same class.
///
/// Expected failures (a file that cannot be read) are never thrown; they are returned with an NSError.
class VXKIT_EXPORT NSException : public std::exception {
public:
    /// `name` says what kind of exception this is, `reason` what happened, for a person to read, and `userInfo`
    /// whatever else may help.
    NSException(const char* name, const QString& reason, std::optional<NSDictionary> userInfo = std::nullopt);
    /// A copy tells the same, the stack included.
    NSException(const NSException&);
    /// Tells what the other tells from then on.
    NSException& operator=(const NSException&);
    ~NSException() override;

    /// What an exception of another class tells: its class as the name, what() as the reason; of an NSException all it
    /// has. AppKit needs none, where everything thrown is an NSException.
    [[nodiscard]] static NSException exceptionWith(const std::exception& exception);

    /// What kind of exception this is. AppKit: `-name`.
    [[nodiscard]] QString name() const { return m_name; }
    /// What happened, for a person to read; may be null. AppKit: `-reason`.
    [[nodiscard]] QString reason() const { return m_reason; }
    /// Whatever else it was given; nothing where that is nothing. AppKit: `-userInfo`.
    [[nodiscard]] const std::optional<NSDictionary>& userInfo() const { return m_userInfo; }

    /// The stack of the code that made the exception, innermost first: which is who threw it. Empty where that was not
    /// one of this class. AppKit: `-callStackReturnAddresses`.
    [[nodiscard]] const std::vector<std::uintptr_t>& callStackReturnAddresses() const { return m_addresses; }

    /// Name and reason in one line, UTF-8.
    [[nodiscard]] const char* what() const noexcept override { return m_what.c_str(); }

private:
    QString m_name;
    QString m_reason;
    std::optional<NSDictionary> m_userInfo;
    std::vector<std::uintptr_t> m_addresses;
    std::string m_what;
};
