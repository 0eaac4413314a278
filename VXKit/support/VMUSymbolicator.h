// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/VXKitExport.h>

#include <QByteArray>
#include <QString>

#include <cstdint>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

/// A program or library as it lay, or lies, in the memory of a process.
struct VMUModule {
    QByteArray path;         ///< of its file, absolute, in the encoding of file names
    std::uint64_t start = 0; ///< address of its first byte
    std::uint64_t end = 0;   ///< address behind its last byte
    QByteArray buildId;      ///< what its linker has marked it with; empty where it has not, or nobody knows

    /// Seconds since 1970. Decides only where there is no mark: a file that changed since is taken for another one.
    std::int64_t unchangedSince = 0;

    /// The same file, marked the same, at the same place.
    friend bool operator==(const VMUModule&, const VMUModule&) = default;
};

/// A function that an address lies in.
class VXKIT_EXPORT VMUSymbol {
public:
    /// What a symbolicator answers; see the operations for what they are.
    VMUSymbol(QString name, QString modulePath, std::uint64_t moduleOffset)
        : m_name(std::move(name)), m_modulePath(std::move(modulePath)), m_moduleOffset(moduleOffset) {}

    /// As in its source: of a C++ function with its arguments.
    [[nodiscard]] QString name() const { return m_name; }
    /// The file of the program or library that it is in.
    [[nodiscard]] QString modulePath() const { return m_modulePath; }
    /// How far behind that module's first byte the address lay that was asked for.
    [[nodiscard]] std::uint64_t moduleOffset() const { return m_moduleOffset; }

    /// The same function and the same offset.
    friend bool operator==(const VMUSymbol&, const VMUSymbol&) = default;

private:
    QString m_name;
    QString m_modulePath;
    std::uint64_t m_moduleOffset;
};

/// What an address stands for in a stack.
enum class VMUAddressKind {
    ReturnAddress, ///< it follows a call; the call is what counts
    Instruction,   ///< the instruction itself: a function's first one, or one that crashed
};

/// Tells the functions that addresses of a process lie in, static ones too where the file of the program or library
/// still names them.
///
/// Names come from the files themselves: the full table of symbols, else the one of exported functions, the compressed
/// one of a stripped file, the debugging information, and the separate files of that below `/usr/lib/debug`. Nothing is
/// ever asked for over the network. A symbol without a size names nothing, because how far it reaches is a guess; so
/// does a file that is not the one that was loaded, even where it lies in its place.
///
/// Copies share what they have read; any thread may use them.
class VXKIT_EXPORT VMUSymbolicator {
public:
    /// Of the process `pid`, with what it has loaded at this moment; knows no address where there is no such process or
    /// this user may not look at it. Of the own process too. AppKit's tools: `+symbolicatorForPid:`.
    [[nodiscard]] static VMUSymbolicator symbolicatorForPid(int pid);

    /// Of a process that had loaded `modules`, which may have ended long ago.
    [[nodiscard]] static VMUSymbolicator symbolicatorForModules(const std::vector<VMUModule>& modules);

    /// The function that `address` lies in; nothing where none is known. A return address is looked up one byte before
    /// itself: after a call that never comes back, the next byte is another function's. The tools' operation of this
    /// name knows no kinds and takes every address for an instruction.
    [[nodiscard]] std::optional<VMUSymbol> symbolForAddress(std::uint64_t address,
                                                            VMUAddressKind kind = VMUAddressKind::ReturnAddress) const;

    /// The programs and libraries that names are looked up in, in no order that means anything.
    [[nodiscard]] const std::vector<VMUModule>& modules() const;

private:
    class Session;

    explicit VMUSymbolicator(std::shared_ptr<Session> session);

    std::shared_ptr<Session> m_session;
};
