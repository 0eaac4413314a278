// SPDX-License-Identifier: MIT
#include <VXKit/platform/foundation/NSException.h>

NSException::NSException(const char* name, const QString& reason)
    : m_name(QString::fromUtf8(name)), m_reason(reason),
      m_what((m_name + QStringLiteral(": ") + reason).toStdString()) {}

NSException::~NSException() = default;
