// SPDX-License-Identifier: MIT
// What the tests of exchanges between computers share.
#pragma once

#include "Computer.h"
#include "DavServer.h"

#include <sync/SyncRun.h>

#include <QCoreApplication>
#include <QFile>

#include <string>
#include <vector>

#include <gtest/gtest.h>

inline std::vector<std::string> toldBy(const SyncOutcome& outcome) {
    std::vector<std::string> notes;
    for (const QString& note : outcome.notes) {
        notes.push_back(note.toStdString());
    }
    return notes;
}

/// Two computers and a real server.
class Syncing : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(server.start());
        one.server = two.server = &server;
    }

    QUrl address() const { return server.address(); }

    QString pathOnServer(double identity) const { return server.files().filePath(SyncedFile::nameFor(at(identity))); }

    std::vector<std::string> filesOnServer() const {
        std::vector<std::string> names;
        for (const QString& file : server.files().entryList(QDir::Files)) {
            names.push_back(file.toStdString());
        }
        return names;
    }

    QByteArray bytesOnServer(double identity) const {
        QFile file(pathOnServer(identity));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    void write(const QString& path, const QByteArray& bytes) const {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
    }

    int argc = 1;
    char name[5] = "test";
    char* argv[2] = {name, nullptr};
    QCoreApplication application{argc, argv};
    DavServer server;
    Computer one{1000};
    Computer two{2000};
};
