// SPDX-License-Identifier: MIT
#include <VXKit/support/VXCrashRecord.h>

#include <VXKit/support/_VXCrashFiles.h>
#include <VXKit/support/_VXCrashFormat.h>
#include <VXKit/support/_VXCrashStack.h>
#include <VXKit/support/_VXModules.h>

#include <QByteArray>
#include <QDataStream>
#include <QIODevice>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <fcntl.h>
#include <map>
#include <string>
#include <string_view>
#include <sys/file.h>
#include <sys/stat.h>
#include <type_traits>
#include <unistd.h>
#include <utility>

namespace {

constexpr std::size_t mostRecords = 10;
constexpr qsizetype mostFrameBytes = qsizetype{4} << 20U; // so that the file with them is not too large to be read
constexpr double nanosecondsPerSecond = 1e9;
constexpr std::int64_t latestSecond = std::int64_t{1} << 40; // a date no clock has reached: not a record

/// Where a section's content is in a file.
struct Section {
    std::size_t offset = 0;
    std::size_t size = 0;
};

template <class Value>
Value valueAt(const char* bytes) {
    static_assert(std::is_trivially_copyable_v<Value>);
    Value value;
    std::memcpy(&value, bytes, sizeof value);
    return value;
}

/// As many as fit into a section, however long it says to be.
template <class Value>
std::vector<Value> valuesOf(std::string_view bytes, Section section, std::size_t most) {
    std::vector<Value> values(std::min(section.size / sizeof(Value), most));
    if (!values.empty()) {
        std::memcpy(values.data(), bytes.data() + section.offset, values.size() * sizeof(Value));
    }
    return values;
}

std::map<VXCrashSectionKind, Section> sectionsOf(std::string_view bytes) {
    std::map<VXCrashSectionKind, Section> sections;
    const std::size_t total = bytes.size();
    std::size_t position = sizeof(VXCrashHead);
    while (position <= total && total - position >= sizeof(VXCrashSection)) {
        const auto header = valueAt<VXCrashSection>(bytes.data() + position);
        position += sizeof header;
        if (header.kind == VXCrashSectionKind::None || header.size > total - position) {
            break;
        }
        sections.emplace(header.kind, Section{position, static_cast<std::size_t>(header.size)});
        position += static_cast<std::size_t>(header.size);
    }
    return sections;
}

bool writeAt(int file, const void* bytes, std::size_t size, std::size_t offset) {
    return ::pwrite(file, bytes, size, static_cast<off_t>(offset)) == static_cast<ssize_t>(size);
}

QByteArray bytesOfFrames(const std::vector<VXCrashFrame>& frames) {
    QByteArray bytes;
    QDataStream stream(&bytes, QIODevice::WriteOnly);
    stream.setVersion(QDataStream::Qt_6_0);
    for (const VXCrashFrame& frame : frames) {
        if (bytes.size() > mostFrameBytes) {
            break;
        }
        stream << quint64{frame.address} << frame.symbol.has_value();
        if (frame.symbol) {
            stream << frame.symbol->name().toUtf8() << frame.symbol->modulePath().toUtf8()
                   << quint64{frame.symbol->moduleOffset()};
        }
    }
    return bytes;
}

std::vector<VXCrashFrame> framesOfBytes(const QByteArray& bytes) {
    std::vector<VXCrashFrame> frames;
    QDataStream stream(bytes);
    stream.setVersion(QDataStream::Qt_6_0);
    while (!stream.atEnd() && frames.size() < VXCrashLimits::frames) {
        quint64 address = 0;
        bool hasSymbol = false;
        QByteArray name;
        QByteArray path;
        quint64 offset = 0;
        stream >> address >> hasSymbol;
        if (hasSymbol) {
            stream >> name >> path >> offset;
        }
        if (stream.status() != QDataStream::Ok) {
            break;
        }
        VXCrashFrame frame{address, std::nullopt};
        if (hasSymbol) {
            frame.symbol = VMUSymbol(QString::fromUtf8(name), QString::fromUtf8(path), offset);
        }
        frames.push_back(std::move(frame));
    }
    return frames;
}

/// What the handler has copied, made into calls.
std::vector<VXCrashFrame> framesOfCrash(std::string_view bytes, const VXCrashHead& head,
                                        const std::map<VXCrashSectionKind, Section>& sections) {
    const auto section = [&](VXCrashSectionKind kind) {
        const auto found = sections.find(kind);
        return found == sections.end() ? Section() : found->second;
    };
    const Section maps = section(VXCrashSectionKind::Maps);
    const auto images = valuesOf<VXLoadedImage>(bytes, section(VXCrashSectionKind::Images), VXCrashLimits::images);
    const std::vector<VMUModule> modules = VXModulesOfMaps(bytes.substr(maps.offset, maps.size), images, head.seconds);

    const auto registers =
        valuesOf<std::uint64_t>(bytes, section(VXCrashSectionKind::Registers), VXCrashLimits::registers);
    VXCrashStack stack;
    stack.instruction = head.instruction;
    stack.registers = registers;
    const Section copy = section(VXCrashSectionKind::Stack);
    if (copy.size > sizeof stack.address) {
        stack.address = valueAt<std::uint64_t>(bytes.data() + copy.offset);
        stack.bytes = {reinterpret_cast<const unsigned char*>(bytes.data()) + copy.offset + sizeof stack.address,
                       copy.size - sizeof stack.address};
    }
    const auto symbolicator = VMUSymbolicator::symbolicatorForModules(modules);
    std::vector<VXCrashFrame> frames;
    for (const VXStackAddress& call : VXUnwindCrashStack(stack, modules)) {
        frames.push_back({call.address, symbolicator.symbolForAddress(call.address, call.kind)});
    }
    return frames;
}

} // namespace

/// The open, locked file and what stands in it.
class VXCrashRecord::File {
public:
    /// Null for what is no record, or somebody else's.
    static std::unique_ptr<File> open(const QByteArray& path) {
        // Read and write, because a pipe that is opened for one of them alone may be waited for.
        const int descriptor = ::open(path.constData(), O_RDWR | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
        if (descriptor < 0) {
            return nullptr;
        }
        auto file = std::make_unique<File>(path, descriptor);
        return file->read() ? std::move(file) : nullptr;
    }

    File(QByteArray path, int descriptor) : m_path(std::move(path)), m_descriptor(descriptor) {}
    File(const File&) = delete;
    File& operator=(const File&) = delete;
    ~File() {
        // The lock belongs to the open file, which a child that was forked meanwhile has open as well.
        ::flock(m_descriptor, LOCK_UN);
        ::close(m_descriptor);
    }

    [[nodiscard]] bool discard() const {
        // Nobody else may have taken the name for another file since.
        struct stat own {};
        struct stat named {};
        const bool isSame = ::fstat(m_descriptor, &own) == 0 && ::lstat(m_path.constData(), &named) == 0 &&
                            own.st_dev == named.st_dev && own.st_ino == named.st_ino;
        return isSame && ::unlink(m_path.constData()) == 0;
    }

    VXCrashHead head;
    QString hostVersion;
    QString exceptionType;
    QString exceptionReason;
    std::vector<VXCrashFrame> frames;

private:
    [[nodiscard]] bool read() {
        struct stat status {};
        if (::fstat(m_descriptor, &status) != 0 || !S_ISREG(status.st_mode) || status.st_uid != ::geteuid() ||
            status.st_size > static_cast<off_t>(VXCrashLimits::fileBytes) ||
            status.st_size < static_cast<off_t>(sizeof(VXCrashHead)) || ::flock(m_descriptor, LOCK_EX | LOCK_NB) != 0) {
            return false;
        }
        // One that was discarded between its opening and the lock is gone.
        std::string bytes(static_cast<std::size_t>(status.st_size), '\0');
        if (::fstat(m_descriptor, &status) != 0 || status.st_nlink == 0 ||
            ::pread(m_descriptor, bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size())) {
            return false;
        }
        head = valueAt<VXCrashHead>(bytes.data());
        if (head.mark != VXCrashMark || head.machine != VXCrashMachine || head.seconds < 0 ||
            head.seconds > latestSecond) {
            return false;
        }
        const auto sections = sectionsOf(bytes);
        const auto text = [&](VXCrashSectionKind kind) {
            const auto found = sections.find(kind);
            return found == sections.end() ? QString()
                                           : QString::fromUtf8(bytes.data() + found->second.offset,
                                                               static_cast<qsizetype>(found->second.size));
        };
        hostVersion = text(VXCrashSectionKind::HostVersion);
        exceptionType = text(VXCrashSectionKind::ExceptionType);
        exceptionReason = text(VXCrashSectionKind::ExceptionReason);
        if (const auto known = sections.find(VXCrashSectionKind::Frames); known != sections.end()) {
            frames = framesOfBytes(
                QByteArray(bytes.data() + known->second.offset, static_cast<qsizetype>(known->second.size)));
        } else {
            frames = framesOfCrash(bytes, head, sections);
            keepFrames(bytes, sections);
        }
        eraseStack(sections);
        return true;
    }

    /// Appends the calls to the sections that are whole.
    void keepFrames(std::string_view bytes, const std::map<VXCrashSectionKind, Section>& sections) const {
        std::size_t end = sizeof(VXCrashHead);
        for (const auto& [kind, section] : sections) {
            end = std::max(end, section.offset + section.size);
        }
        const QByteArray content = bytesOfFrames(frames);
        const VXCrashSection header{VXCrashSectionKind::Frames, static_cast<std::uint64_t>(content.size())};
        const bool isCutOff = end < bytes.size();
        // What follows the last whole section may be half a stack, and must not be found behind the calls.
        if (isCutOff && ::ftruncate(m_descriptor, static_cast<off_t>(end)) != 0) {
            return;
        }
        if (writeAt(m_descriptor, content.constData(), static_cast<std::size_t>(content.size()), end + sizeof header)) {
            static_cast<void>(writeAt(m_descriptor, &header, sizeof header, end));
        }
    }

    void eraseStack(const std::map<VXCrashSectionKind, Section>& sections) const {
        const auto found = sections.find(VXCrashSectionKind::Stack);
        if (found == sections.end()) {
            return;
        }
        const auto [offset, size] = found->second;
        const VXCrashSection header{VXCrashSectionKind::Erased, size};
        const QByteArray nothing(static_cast<qsizetype>(size), '\0');
        if (!writeAt(m_descriptor, nothing.constData(), size, offset) ||
            !writeAt(m_descriptor, &header, sizeof header, offset - sizeof header)) {
            // Better no record the next time than the copy of a stack for longer than was promised.
            static_cast<void>(::ftruncate(m_descriptor, static_cast<off_t>(offset - sizeof header)));
        }
        ::fdatasync(m_descriptor);
    }

    QByteArray m_path;
    int m_descriptor;
};

VXCrashRecord::VXCrashRecord(std::unique_ptr<File> file) : m_file(std::move(file)) {}
VXCrashRecord::VXCrashRecord(VXCrashRecord&&) noexcept = default;
VXCrashRecord& VXCrashRecord::operator=(VXCrashRecord&&) noexcept = default;
VXCrashRecord::~VXCrashRecord() = default;

QString VXCrashRecord::signalName() const {
    const char* name = ::sigabbrev_np(m_file->head.signal);
    return name ? QStringLiteral("SIG") + QString::fromLatin1(name)
                : QStringLiteral("signal %1").arg(m_file->head.signal);
}

int VXCrashRecord::signalNumber() const {
    return m_file->head.signal;
}

int VXCrashRecord::signalCode() const {
    return m_file->head.code;
}

int VXCrashRecord::senderIdentifier() const {
    return m_file->head.sender;
}

std::uint64_t VXCrashRecord::faultAddress() const {
    return m_file->head.faultAddress;
}

NSDate VXCrashRecord::date() const {
    return NSDate::dateWithTimeIntervalSince1970(static_cast<double>(m_file->head.seconds) +
                                                 static_cast<double>(m_file->head.nanoseconds) / nanosecondsPerSecond);
}

int VXCrashRecord::processIdentifier() const {
    return m_file->head.process;
}

int VXCrashRecord::threadIdentifier() const {
    return m_file->head.thread;
}

QString VXCrashRecord::hostVersion() const {
    return m_file->hostVersion;
}

QString VXCrashRecord::exceptionType() const {
    return m_file->exceptionType;
}

QString VXCrashRecord::exceptionReason() const {
    return m_file->exceptionReason;
}

const std::vector<VXCrashFrame>& VXCrashRecord::frames() const {
    return m_file->frames;
}

bool VXCrashRecord::discard() {
    return m_file->discard();
}

std::vector<VXCrashRecord> VXTakeCrashRecords(const QString& folder) {
    VXRemoveSurplusCrashFiles(folder);
    std::vector<VXCrashRecord> records;
    for (const QByteArray& path : VXCrashFiles(folder)) {
        if (records.size() == mostRecords) {
            break;
        }
        if (auto file = VXCrashRecord::File::open(path)) {
            records.push_back(VXCrashRecord(std::move(file)));
        }
    }
    return records;
}
