// SPDX-License-Identifier: MIT
#include "SnippetPasteboard.h"

#include <VXKit/controls/LTCopyPopUp.h>
#include <VXKit/platform/appkit/NSPasteboard.h>
#include <VXKit/support/NSPasteboard+VXKitAdditions.h>

#include <QCoreApplication>
#include <QMetaObject>

std::shared_ptr<Snippet> addSnippetOfText(SnippetsDatabase& database, const QString& text) {
    const QString title = Snippet::titleForText(text);
    if (title.isEmpty()) {
        return nullptr;
    }
    const NSDate now = NSDate::date();
    double realID = 0.0;
    std::shared_ptr<Snippet> snippet =
        _LTSnippet::emptySnippetWithUniqueIDStartingDate<Snippet>(now.timeIntervalSince1970(), &realID);
    snippet->setTitle(title);
    snippet->setText(text);
    snippet->updateModificationDateWithDate(now);
    database.addSnippet(snippet);
    return snippet;
}

std::shared_ptr<Snippet> addSnippetFromPasteboard(SnippetsDatabase& database, const NSPasteboard& pasteboard) {
    return addSnippetOfText(database, stringValue(pasteboard));
}

bool copySnippetToPasteboard(const std::shared_ptr<Snippet>& snippet, SnippetsDatabase& database,
                             NSPasteboard& pasteboard) {
    pasteboard.clearContents();
    if (!pasteboard.setString(snippet->text(), QString::fromLatin1(NSStringPboardType))) {
        return false;
    }
    snippet->noteUse(NSDate::date());
    database.notifyOfModificationForSnippet(snippet);
    return true;
}

void showCopyPopUp() {
    QMetaObject::invokeMethod(
        QCoreApplication::instance(), [] { LTCopyPopUp::pop(); }, Qt::QueuedConnection);
}
