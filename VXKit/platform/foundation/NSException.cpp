// SPDX-License-Identifier: MIT
#include <VXKit/platform/foundation/NSException.h>

#include <VXKit/platform/foundation/Demangling.h>
#include <VXKit/platform/foundation/NSThread.h>

#include <typeinfo>
#include <utility>

NSException::NSException(const char* name, const QString& reason, std::optional<NSDictionary> userInfo)
    : m_name(QString::fromUtf8(name)), m_reason(reason), m_userInfo(std::move(userInfo)),
      m_addresses(NSThread::callStackReturnAddresses()),
      m_what((m_name + QStringLiteral(": ") + reason).toStdString()) {}

NSException::NSException(const NSException&) = default;

NSException& NSException::operator=(const NSException&) = default;

NSException::~NSException() = default;

NSException NSException::exceptionWith(const std::exception& exception) {
    if (const auto* ours = dynamic_cast<const NSException*>(&exception)) {
        return *ours;
    }
    NSException result(demangled(typeid(exception).name()).c_str(), QString::fromLocal8Bit(exception.what()));
    // They are of whoever caught it.
    result.m_addresses.clear();
    return result;
}
