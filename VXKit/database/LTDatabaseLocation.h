// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

#include <memory>

class LTDatabase;

/// Where the shared database lies: in the user's preferences, or in a file of the person's own choice. Finds out, asks
/// where that has to be decided, and opens the database there.
///
/// Private to the database folder. Two user-defaults keys hold the choice: "UsesCustomDB", and "CustomDBFilePath" with
/// the full path, which outlasts a return to the default. A file of one's own takes the database out of reach of the
/// sync manager, which is then told to stay off.
class LTDatabaseLocation {
public:
    /// An empty database of the class that was asked for, to be asked for its settings and to be initialised.
    using MakeDatabase = std::shared_ptr<LTDatabase> (*)();

    explicit LTDatabaseLocation(MakeDatabase makeDatabase);

    /// Opens the database and makes it the shared one. With the Option key held the person chooses where it lies, and
    /// may end the process instead. A file of the person's choice that gives no database is told of, and the default
    /// one taken; what the default one, or a newly created one, throws while it is made leaves this.
    [[nodiscard]] std::shared_ptr<LTDatabase> openDatabase();

    /// From the next time on it is the default file, and the sync manager may sync again.
    static void returnToDefault();

private:
    [[nodiscard]] std::shared_ptr<LTDatabase> openChosenBefore();
    [[nodiscard]] std::shared_ptr<LTDatabase> letPersonChoose();
    [[nodiscard]] std::shared_ptr<LTDatabase> openChosen(const QString& path);
    [[nodiscard]] std::shared_ptr<LTDatabase> createChosen(const QString& path);
    [[nodiscard]] std::shared_ptr<LTDatabase> openDefault();
    [[nodiscard]] std::shared_ptr<LTDatabase> openDefaultAfterTelling(const QString& problem);
    [[nodiscard]] std::shared_ptr<LTDatabase> openCustom(const QString& path);
    [[nodiscard]] std::shared_ptr<LTDatabase> open(const QString& path);

    [[nodiscard]] QString databaseName();
    [[nodiscard]] QString databaseFileName();
    LTDatabase& blank();

    MakeDatabase m_makeDatabase;
    std::shared_ptr<LTDatabase> m_blank; ///< answers what its class is set to until it is opened itself
};
