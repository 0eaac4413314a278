// SPDX-License-Identifier: MIT
#include <VXKit/platform/foundation/NSUserDefaults.h>

#include <VXKit/platform/foundation/AtomicFile.h>
#include <VXKit/platform/foundation/NSLog.h>
#include <VXKit/platform/foundation/NSProcessInfo.h>
#include <VXKit/platform/foundation/NSPropertyListSerialization.h>

#include <QCoreApplication>
#include <QFile>
#include <QFileDevice>
#include <QFileInfo>
#include <QSettings>
#include <QStandardPaths>

#include <algorithm>
#include <cerrno>
#include <ctime>
#include <fcntl.h>
#include <sys/stat.h>
#include <utility>

namespace {

/// How many damaged files are kept beside one settings file before it is no longer written.
constexpr int mostDamagedFiles = 100;

// QSettings takes '/' for a separator of groups, drops slashes that stand first, last or twice, and refuses an empty
// key. Its keys are therefore those of the file with '/' and '%' escaped, and "%" for the empty one.

QString settingsKey(std::string_view key) {
    if (key.empty()) {
        return QStringLiteral("%");
    }
    QString escaped = QString::fromUtf8(key.data(), static_cast<qsizetype>(key.size()));
    escaped.replace(u'%', QStringLiteral("%25"));
    escaped.replace(u'/', QStringLiteral("%2F"));
    return escaped;
}

std::string keyOfSettingsKey(QString key) {
    if (key == QStringLiteral("%")) {
        return {};
    }
    key.replace(QStringLiteral("%2F"), QStringLiteral("/"));
    key.replace(QStringLiteral("%25"), QStringLiteral("%"));
    return key.toStdString();
}

QVariant settingsValue(const NSPropertyList& value) {
    return QVariant::fromValue(value);
}

/// The property list in `value`, or null where there is none.
const NSPropertyList* propertyListOfSettingsValue(const QVariant& value) {
    const bool holdsOne = value.metaType() == QMetaType::fromType<NSPropertyList>();
    return holdsOne ? static_cast<const NSPropertyList*>(value.constData()) : nullptr;
}

QString nameOfDevice(const QIODevice& device) {
    const auto* file = qobject_cast<const QFileDevice*>(&device);
    return file ? file->fileName() : QString();
}

/// The dictionary that a settings file holds, or nothing with the reason in `error`.
std::optional<NSDictionary> dictionaryOfBytes(std::string_view bytes, NSError* error) {
    const std::optional<NSPropertyList> content =
        NSPropertyListSerialization::propertyListWithData(bytes, nullptr, error);
    if (!content) {
        return {};
    }
    const auto* dictionary = content->as<NSDictionary>();
    if (!dictionary) {
        NSSetError(error, QStringLiteral("Its top is no dictionary"));
        return {};
    }
    return *dictionary;
}

bool readSettings(QIODevice& device, QSettings::SettingsMap& map) {
    const QByteArray bytes = device.readAll();
    NSError error;
    const std::optional<NSDictionary> dictionary =
        dictionaryOfBytes({bytes.constData(), static_cast<std::size_t>(bytes.size())}, &error);
    if (!dictionary) {
        NSLog("The settings in %@ are damaged and count as absent: %@", nameOfDevice(device),
              error.localizedDescription);
        return false;
    }
    for (const NSDictionary::Entry& entry : *dictionary) {
        map.insert(settingsKey(entry.key.text()), settingsValue(entry.object));
    }
    return true;
}

/// Gives the damaged file at `path` a second name, so that it outlives its replacement. A hard link needs no room on
/// the disk and keeps mode and owner; where the file system has none, a copy must do.
bool keepAside(const QString& path) {
    const QByteArray name = QFile::encodeName(path);
    for (int number = 1; number <= mostDamagedFiles; ++number) {
        const QString aside =
            path + QStringLiteral(".damaged") + (number > 1 ? QStringLiteral("-%1").arg(number) : QString());
        if (::linkat(AT_FDCWD, name.constData(), AT_FDCWD, QFile::encodeName(aside).constData(), AT_SYMLINK_FOLLOW) ==
                0 ||
            (errno != EEXIST && QFile::copy(path, aside))) {
            NSLog("The damaged settings are kept in %@", aside);
            return true;
        }
    }
    NSLog("The damaged settings in %@ cannot be kept aside, so they are not replaced", path);
    return false;
}

/// Whether the file at `path` may be replaced: it holds settings, or nothing, or has been kept aside.
bool mayReplace(const QString& path) {
    const QFileInfo info(path);
    if (!info.exists() || info.size() == 0) {
        return true;
    }
    NSError error;
    const std::optional<std::string> bytes = VXReadFile(path, &error);
    if (!bytes) {
        NSLog("The settings cannot be read and are not replaced: %@", error.localizedDescription);
        return false;
    }
    return dictionaryOfBytes(*bytes, nullptr) || keepAside(path);
}

/// The time to stamp the next content of the file at `path` with. QSettings knows a changed file by its size and its
/// time in milliseconds, while the kernel's own stamps advance every four milliseconds or so: two contents of the same
/// size must not share one.
timespec nextTimeStamp(const QString& path) {
    timespec now{};
    ::clock_gettime(CLOCK_REALTIME, &now);
    struct stat old {};
    if (::stat(QFile::encodeName(path).constData(), &old) != 0) {
        return now;
    }
    constexpr long millisecond = 1'000'000;
    constexpr long second = 1'000'000'000;
    timespec next = old.st_mtim;
    next.tv_nsec += millisecond;
    if (next.tv_nsec >= second) {
        next.tv_nsec -= second;
        ++next.tv_sec;
    }
    return std::max(now, next, [](const timespec& a, const timespec& b) {
        return std::pair(a.tv_sec, a.tv_nsec) < std::pair(b.tv_sec, b.tv_nsec);
    });
}

/// Called by QSettings under its lock on the file, with a QSaveFile.
bool writeSettings(QIODevice& device, const QSettings::SettingsMap& map) {
    auto* file = qobject_cast<QFileDevice*>(&device);
    if (!file || !mayReplace(file->fileName())) {
        return false;
    }
    NSDictionary dictionary;
    for (auto entry = map.cbegin(); entry != map.cend(); ++entry) {
        if (const NSPropertyList* value = propertyListOfSettingsValue(entry.value())) {
            dictionary.setObject(*value, keyOfSettingsKey(entry.key()));
        }
    }
    NSError error;
    const std::optional<std::string> bytes = NSPropertyListSerialization::dataWithPropertyList(dictionary, &error);
    if (!bytes) {
        NSLog("The settings cannot be written to %@: %@", file->fileName(), error.localizedDescription);
        return false;
    }
    // Qt 6.4 does not report a disk that is full when QSaveFile's buffer is flushed, and puts the torn file in place;
    // the size of what arrived tells. To be removed once QSaveFile::commit checks its flush.
    const auto size = static_cast<qint64>(bytes->size());
    struct stat written {};
    if (file->write(bytes->data(), size) != size || !file->flush() || ::fstat(file->handle(), &written) != 0 ||
        written.st_size != size) {
        NSLog("The settings cannot be written to %@: %@", file->fileName(), file->errorString());
        return false;
    }
    const timespec stamp = nextTimeStamp(file->fileName());
    const timespec stamps[2] = {stamp, stamp};
    return ::futimens(file->handle(), stamps) == 0;
}

std::unique_ptr<QSettings> openSettings(const QString& path) {
    static const QSettings::Format format =
        QSettings::registerFormat(QStringLiteral("plist"), readSettings, writeSettings, Qt::CaseSensitive);
    return std::make_unique<QSettings>(path, format);
}

QString standardPath() {
    const auto fileName = [](QString name) { return name.replace(u'/', u'_'); };
    QString application = QCoreApplication::applicationName();
    if (application.isEmpty()) {
        application = NSProcessInfo::processInfo().processName();
    }
    QString organization = QCoreApplication::organizationName();
    if (organization.isEmpty()) {
        organization = application;
    }
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) + u'/' + fileName(organization) +
           u'/' + fileName(application) + QStringLiteral(".plist");
}

} // namespace

struct NSUserDefaults::Private {
    QString path;
    std::unique_ptr<QSettings> settings;
    NSDictionary registered;

    /// Writes and reads; a QSettings never forgets an error, so one that had one makes room for another first. That one
    /// joins the content of the file in memory, changes not written included, for as long as the old one holds it.
    QSettings::Status sync() {
        if (settings->status() != QSettings::NoError) {
            settings = openSettings(path);
        }
        settings->sync();
        return settings->status();
    }
};

NSUserDefaults& NSUserDefaults::standardUserDefaults() {
    static NSUserDefaults defaults(standardPath());
    return defaults;
}

NSUserDefaults::NSUserDefaults(const QString& path) : m_private(std::make_unique<Private>()) {
    m_private->path = QFileInfo(path).absoluteFilePath();
    m_private->settings = openSettings(m_private->path);
    if (m_private->settings->status() == QSettings::AccessError) {
        NSLog("The settings in %@ cannot be read and count as absent", m_private->path);
    }
}

NSUserDefaults::~NSUserDefaults() = default;

QString NSUserDefaults::path() const {
    return m_private->path;
}

std::optional<NSPropertyList> NSUserDefaults::objectForKey(std::string_view key) const {
    const QVariant value = m_private->settings->value(settingsKey(key));
    if (const NSPropertyList* object = propertyListOfSettingsValue(value)) {
        return *object;
    }
    const NSPropertyList* registered = m_private->registered.objectForKey(key);
    return registered ? std::optional(*registered) : std::nullopt;
}

bool NSUserDefaults::boolForKey(std::string_view key) const {
    const std::optional<NSPropertyList> object = objectForKey(key);
    return object && object->boolValue();
}

std::int64_t NSUserDefaults::integerForKey(std::string_view key) const {
    const std::optional<NSPropertyList> object = objectForKey(key);
    return object ? object->integerValue() : 0;
}

double NSUserDefaults::doubleForKey(std::string_view key) const {
    const std::optional<NSPropertyList> object = objectForKey(key);
    return object ? object->doubleValue() : 0.0;
}

QString NSUserDefaults::stringForKey(std::string_view key) const {
    const std::optional<NSPropertyList> object = objectForKey(key);
    if (!object) {
        return {};
    }
    if (const auto* string = object->as<std::string>()) {
        // An empty string is one that is there.
        return string->empty() ? QStringLiteral("") : QString::fromStdString(*string);
    }
    const bool isNumber =
        object->as<bool>() || object->as<std::int64_t>() || object->as<std::uint64_t>() || object->as<double>();
    return isNumber ? object->description() : QString();
}

std::optional<NSArray> NSUserDefaults::arrayForKey(std::string_view key) const {
    std::optional<NSPropertyList> object = objectForKey(key);
    auto* array = object ? object->as<NSArray>() : nullptr;
    return array ? std::optional(std::move(*array)) : std::nullopt;
}

std::optional<NSDictionary> NSUserDefaults::dictionaryForKey(std::string_view key) const {
    std::optional<NSPropertyList> object = objectForKey(key);
    auto* dictionary = object ? object->as<NSDictionary>() : nullptr;
    return dictionary ? std::optional(std::move(*dictionary)) : std::nullopt;
}

void NSUserDefaults::setObject(const NSPropertyList& object, std::string_view key) {
    // One value that cannot be written would keep all others from the file.
    NSError error;
    if (!NSPropertyListSerialization::dataWithPropertyList(NSDictionary{{key, object}}, &error)) {
        NSLog("The setting %@ cannot be kept: %@", key, error.localizedDescription);
        return;
    }
    m_private->settings->setValue(settingsKey(key), settingsValue(object));
}

void NSUserDefaults::setBool(bool value, std::string_view key) {
    setObject(value, key);
}

void NSUserDefaults::setInteger(std::int64_t value, std::string_view key) {
    setObject(value, key);
}

void NSUserDefaults::setDouble(double value, std::string_view key) {
    setObject(value, key);
}

void NSUserDefaults::removeObjectForKey(std::string_view key) {
    m_private->settings->remove(settingsKey(key));
}

void NSUserDefaults::registerDefaults(const NSDictionary& defaults) {
    for (const NSDictionary::Entry& entry : defaults) {
        m_private->registered.setObject(entry.object, entry.key.text());
    }
}

bool NSUserDefaults::synchronize() {
    QSettings::Status status = m_private->sync();
    if (status == QSettings::FormatError) {
        // A damaged file was met on the way; whether it then was replaced, this status no longer tells.
        status = m_private->sync();
    }
    if (status != QSettings::NoError) {
        NSLog("The settings in %@ could not be synchronised", m_private->path);
        return false;
    }
    return true;
}
