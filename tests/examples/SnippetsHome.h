// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/platform/foundation/NSPropertyList.h>

#include <QFile>
#include <QProcessEnvironment>
#include <QString>
#include <QTemporaryDir>

#include <optional>
#include <string>
#include <vector>

/// A home folder that all processes of the example host in one test share, with nothing of the person's in it.
class SnippetsHome {
public:
    [[nodiscard]] bool isValid() const { return m_folder.isValid(); }
    [[nodiscard]] QString filePath(const QString& name) const { return m_folder.filePath(name); }

    /// What a process needs to live in it.
    [[nodiscard]] QProcessEnvironment environment() const {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("HOME"), m_folder.path());
        environment.insert(QStringLiteral("XDG_CONFIG_HOME"), filePath(QStringLiteral("config")));
        return environment;
    }

    /// The same for one that has no desktop, unless by way of the session bus.
    [[nodiscard]] QProcessEnvironment environmentWithoutDisplay(const char* platform = "offscreen") const {
        QProcessEnvironment environment = this->environment();
        environment.insert(QStringLiteral("XDG_RUNTIME_DIR"), m_folder.path());
        environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QString::fromLatin1(platform));
        environment.remove(QStringLiteral("DISPLAY"));
        environment.remove(QStringLiteral("WAYLAND_DISPLAY"));
        return environment;
    }

    [[nodiscard]] QString databasePath() const {
        return filePath(QStringLiteral("Library/Preferences/Snippets.plist"));
    }

    /// The titles in the database's file; nothing where there is none.
    [[nodiscard]] std::optional<std::vector<std::string>> savedTitles() const {
        if (!QFile::exists(databasePath())) {
            return std::nullopt;
        }
        const auto content = NSDictionary::dictionaryWithContentsOfFile(databasePath());
        const NSArray* records = content ? content->objectOfType<NSArray>("contents") : nullptr;
        if (!records) {
            return std::nullopt;
        }
        std::vector<std::string> titles;
        for (const NSPropertyList& record : *records) {
            const auto* title = record.as<NSDictionary>()->objectOfType<std::string>("title");
            titles.push_back(title ? *title : std::string());
        }
        return titles;
    }

private:
    QTemporaryDir m_folder;
};
