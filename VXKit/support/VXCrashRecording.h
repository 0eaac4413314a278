// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/VXKitExport.h>
#include <VXKit/platform/foundation/NSError.h>

#include <QString>

/// From now on a crash of this process leaves a record in `folder`, for VXTakeCrashRecords to find at the next start:
/// the signal, the stack of the thread that crashed, and of an exception that nobody caught its class and what it says.
///
/// Recorded are SIGSEGV, SIGBUS, SIGILL, SIGFPE, SIGABRT, SIGTRAP and SIGSYS, and what std::terminate ends. A process
/// writes one record in its life, whichever thread crashes first. It then dies as it would have died: by the same
/// signal, with the same core file, and a handler or terminate handler that stood there before runs as if there was no
/// other. What the handler does is safe wherever the process crashed, in the middle of an allocation or while libraries
/// are loaded: it copies registers, stack and the list of what is loaded as they are, and names are looked up by the
/// one who reads the record.
///
/// **The record holds a copy of up to a mebibyte of the stack, and with it whatever secrets lay there.** Its file can
/// be read by this user only (mode 0600), and the copy is wiped when the record is taken. It never leaves the machine
/// unless the host sends it; VXCrashRecord does not give it out.
///
/// `folder` is made where there is none, for this user only; of the records in it the newest ten are kept.
/// `hostVersion`, cut after 255 bytes, is what the record tells as the version of the host; where it is null, what the
/// main bundle's CFBundleVersion says. False, with the reason in `error`, where the folder cannot be had; then nothing
/// is recorded. Once more with other arguments: those count from then on.
///
/// - A stack overflow is recorded on the thread that called this, which gets an alternate signal stack for that unless
///   it has one; on other threads only where they have one of their own.
/// - Handlers that mend what they are called for (of virtual machines, say) are to be installed after this, and to pass
///   on what is not theirs.
/// - A process that forks leaves two that record, each under its own number.
///
/// Main thread only.
VXKIT_EXPORT bool VXRecordCrashes(const QString& folder, const QString& hostVersion = {}, NSError* error = nullptr);

/// Ends that, and puts back the handlers that were there before, but for those that something else has replaced
/// meanwhile. Records stay. Main thread only.
VXKIT_EXPORT void VXStopRecordingCrashes();
