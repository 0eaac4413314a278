// SPDX-License-Identifier: MIT
#pragma once

/// What servers answer.
namespace HttpStatus {
constexpr int multiStatus = 207;
constexpr int unauthorized = 401;
constexpr int forbidden = 403;
constexpr int notFound = 404;
constexpr int methodNotAllowed = 405;
constexpr int proxyUnauthorized = 407;
constexpr int conflict = 409;
constexpr int preconditionFailed = 412;
constexpr int locked = 423;
constexpr int notImplemented = 501;
constexpr int insufficientStorage = 507;
} // namespace HttpStatus
