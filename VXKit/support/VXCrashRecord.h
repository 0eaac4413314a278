// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/VXKitExport.h>
#include <VXKit/platform/foundation/NSDate.h>
#include <VXKit/support/VMUSymbolicator.h>

#include <QString>

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

/// One call of the stack that crashed.
struct VXCrashFrame {
    std::uint64_t address = 0;       ///< the instruction that crashed, else a return address
    std::optional<VMUSymbol> symbol; ///< nothing where no function is known

    /// The same address and symbol.
    friend bool operator==(const VXCrashFrame&, const VXCrashFrame&) = default;
};

/// What a crash of an earlier run has left behind (see VXRecordCrashes).
///
/// While one exists nobody else is given the same record, in this process or another. One that is destroyed without
/// discard() can be taken again, by the next run too, so that a report that could not be sent is not lost.
class VXKIT_EXPORT VXCrashRecord {
public:
    /// Takes the record over; the other is good for nothing but to be destroyed or assigned to.
    VXCrashRecord(VXCrashRecord&&) noexcept;
    /// Gives its own record back, as its end does, and takes the other's over.
    VXCrashRecord& operator=(VXCrashRecord&&) noexcept;
    ~VXCrashRecord();

    /// The signal that the process died of, "SIGSEGV" for instance.
    [[nodiscard]] QString signalName() const;
    /// Its number, 11 for SIGSEGV.
    [[nodiscard]] int signalNumber() const;
    /// Why the system sent it, as `si_code` says: for a SIGSEGV, 1 is that nothing is mapped there. Below 1 when a
    /// process sent it.
    [[nodiscard]] int signalCode() const;
    /// The process that sent the signal: the one that died itself for an abort; 0 where the system did.
    [[nodiscard]] int senderIdentifier() const;
    /// What could not be read, written or run; 0 where the signal tells of no address.
    [[nodiscard]] std::uint64_t faultAddress() const;

    /// When it crashed.
    [[nodiscard]] NSDate date() const;
    /// Of the process that crashed, as the system named it then.
    [[nodiscard]] int processIdentifier() const;
    /// Of the thread that crashed, as the system named it then.
    [[nodiscard]] int threadIdentifier() const;
    /// Whether that was the main thread.
    [[nodiscard]] bool isMainThread() const { return threadIdentifier() == processIdentifier(); }
    /// Of the host when it crashed.
    [[nodiscard]] QString hostVersion() const;

    /// The class of the exception that nobody caught; empty where it was not one that ended the process.
    [[nodiscard]] QString exceptionType() const;
    /// What that exception says; empty where it says nothing.
    [[nodiscard]] QString exceptionReason() const;

    /// The stack of the thread that crashed, innermost first: the instruction itself, then return addresses. At most
    /// 16384, the innermost.
    [[nodiscard]] const std::vector<VXCrashFrame>& frames() const;

    /// The record has done its duty: removes its file. False where that failed.
    bool discard();

private:
    friend std::vector<VXCrashRecord> VXTakeCrashRecords(const QString& folder);

    class File;

    explicit VXCrashRecord(std::unique_ptr<File> file);

    std::unique_ptr<File> m_file;
};

/// The records in `folder`, newest first, at most ten; older ones are removed.
///
/// Names come from the files that were loaded, where they are still the same. Of each record the copy of the stack is
/// wiped at once, before anybody sees the record; what was made of it takes its place, so that a record which is taken
/// again after an update of the program tells the same. What is no record (cut off before it says anything, of another
/// make, larger than eight mebibytes, of another user's, a link, a pipe) is passed over and counts as one of the ten
/// where it is a file of this user's, so that it goes in time. So is one that is still being written, or that somebody
/// else has taken. Any thread.
[[nodiscard]] VXKIT_EXPORT std::vector<VXCrashRecord> VXTakeCrashRecords(const QString& folder);
