// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/VXKitExport.h>

#include <QByteArray>
#include <QHash>
#include <QString>
#include <QStringList>

#include <vector>

/// What a nib's file says, checked, in two parts: the form, which Qt makes objects of, and what is taken out of it
/// because Qt would only print a warning where it is wrong, without the file's name.
///
/// A helper of NSNib's; hosts have no use for it.
struct VXKIT_EXPORT NibDocument {
    /// A property whose value is a name, or several.
    struct Enumeration {
        QString name;
        QString value;
    };
    struct Object {
        QString className;
        QString name;
        std::vector<Enumeration> enumerations;
    };
    struct Connection {
        QString sender;
        QString signal;
        QString receiver;
        QString slot;
    };

    /// Of the property that numbers the objects in the form, by their place in `objects`.
    static constexpr const char* numberProperty = "_nibObject";

    /// A window or widget in a form that a person has drawn is some ten deep; a thousand would overflow the stack.
    static constexpr int mostElementsDeep = 250;

    /// What `content` says. Where nothing can be made of it, `fault` tells why, with line and column; else that is
    /// null.
    [[nodiscard]] static NibDocument read(const QByteArray& content);

    /// The style that a window of that name asks for, as it is written; null where it does not.
    QHash<QString, QString> styleMasks;
    QHash<QString, QString> baseClasses; ///< of promoted classes, by their names
    QByteArray form;
    std::vector<Object> objects; ///< the widgets, in the order of the file
    std::vector<Connection> connections;
    QStringList tabStops;
    QStringList smallFaults; ///< what was left out of the form, for what is wrong with it
    QString fault;
};
