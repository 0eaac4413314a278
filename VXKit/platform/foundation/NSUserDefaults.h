// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/VXKitExport.h>
#include <VXKit/platform/foundation/NSPropertyList.h>

#include <QString>

#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>

/// The user's settings of a program: property-list values under text keys, kept in an XML property list.
///
/// Values keep their exact types: an absent value differs from false, a whole number from a double. Keys are UTF-8 and
/// case-sensitive, any text will do. Reading asks memory only. Changes are seen at once by every NSUserDefaults on the
/// same file in this process; they are written by `synchronize()`, by the event loop when it next runs, and when the
/// object goes. Writing is atomic, and merges: processes that change different keys of a file both keep theirs.
///
/// A file that is no property list, or has no dictionary at its top, is logged and read as if it held nothing. The
/// first write then puts a copy of it beside the new one (`name.plist.damaged`, or `.damaged-2` and so on where that is
/// taken), and does not happen where that fails.
///
/// Use one from one thread only. Stands for the AppKit class of the same name.
class VXKIT_EXPORT NSUserDefaults {
public:
    /// The settings of this program: `<organization>/<application>.plist` in the user's configuration folder
    /// (`$XDG_CONFIG_HOME`, else `~/.config`), named as the Qt application is (without an organization, its folder is
    /// named after the application too). The names are asked at the first call, so set them before.
    /// AppKit: `+standardUserDefaults`.
    [[nodiscard]] static NSUserDefaults& standardUserDefaults();

    /// The settings in the file at `path`, which need not be there yet.
    explicit NSUserDefaults(const QString& path);
    NSUserDefaults(const NSUserDefaults&) = delete;
    NSUserDefaults& operator=(const NSUserDefaults&) = delete;
    /// Writes changes that are not written yet.
    ~NSUserDefaults();

    /// The file the settings are kept in.
    [[nodiscard]] QString path() const;

    /// The value that was set under `key`, else the registered one, else nothing. AppKit: `-objectForKey:`.
    [[nodiscard]] std::optional<NSPropertyList> objectForKey(std::string_view key) const;

    /// The value under `key` as NSPropertyList::boolValue reads it; false where there is none. AppKit: `-boolForKey:`.
    [[nodiscard]] bool boolForKey(std::string_view key) const;

    /// The value under `key` as NSPropertyList::integerValue reads it; 0 where there is none.
    /// AppKit: `-integerForKey:`.
    [[nodiscard]] std::int64_t integerForKey(std::string_view key) const;

    /// The value under `key` as NSPropertyList::doubleValue reads it; 0 where there is none. AppKit: `-doubleForKey:`.
    [[nodiscard]] double doubleForKey(std::string_view key) const;

    /// The string under `key`, a number or boolean there as text; a null string where there is none of these.
    /// AppKit: `-stringForKey:`.
    [[nodiscard]] QString stringForKey(std::string_view key) const;

    /// The array under `key`; nothing where there is none. AppKit: `-arrayForKey:`.
    [[nodiscard]] std::optional<NSArray> arrayForKey(std::string_view key) const;

    /// The dictionary under `key`; nothing where there is none. AppKit: `-dictionaryForKey:`.
    [[nodiscard]] std::optional<NSDictionary> dictionaryForKey(std::string_view key) const;

    /// Sets `object` under `key`. What the file's form cannot hold (control characters in a string, text that is not
    /// UTF-8) is refused: that is logged, and the key keeps its value. On disk dates have whole seconds.
    /// AppKit: `-setObject:forKey:`.
    void setObject(const NSPropertyList& object, std::string_view key);

    /// AppKit: `-setBool:forKey:`.
    void setBool(bool value, std::string_view key);
    /// AppKit: `-setInteger:forKey:`.
    void setInteger(std::int64_t value, std::string_view key);
    /// AppKit: `-setDouble:forKey:`.
    void setDouble(double value, std::string_view key);

    /// Takes the value that was set under `key` away, so that the registered one shows again; does nothing where there
    /// is none. AppKit: `-removeObjectForKey:`.
    void removeObjectForKey(std::string_view key);

    /// Adds values to be found under keys that were not set. They are never written. A later one under the same key
    /// takes the place of the earlier. AppKit: `-registerDefaults:`.
    void registerDefaults(const NSDictionary& defaults);

    /// Writes the changes to the file and reads what other processes changed in it. True when the file holds every
    /// change; false, after a log line, when it could not be written: it then has its old content whole, the changes
    /// stay in memory, and the next call tries again. AppKit: `-synchronize`.
    [[nodiscard]] bool synchronize();

private:
    struct Private;
    std::unique_ptr<Private> m_private;
};
