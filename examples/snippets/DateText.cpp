// SPDX-License-Identifier: MIT
#include "DateText.h"

#include <QDateTime>
#include <QLocale>

#include <cmath>

namespace {

constexpr double minute = 60.0; // seconds
constexpr double hour = 3600.0; // seconds

QDateTime localTime(NSDate date) {
    return QDateTime::fromSecsSinceEpoch(static_cast<qint64>(std::floor(date.timeIntervalSince1970())));
}

/// The texts of this program are English, so its dates are too.
QString inEnglish(const QDateTime& time, const QString& format) {
    return QLocale(QLocale::English).toString(time, format);
}

} // namespace

QString relativeDateText(NSDate date, NSDate now) {
    const double age = now.timeIntervalSince1970() - date.timeIntervalSince1970();
    if (age >= 0.0 && age < minute) {
        return QStringLiteral("Just now");
    }
    if (age >= 0.0 && age < hour) {
        return QStringLiteral("%1 min ago").arg(static_cast<int>(age / minute));
    }
    const QDateTime time = localTime(date);
    const QDate today = localTime(now).date();
    if (time.date() == today) {
        return inEnglish(time, QStringLiteral("HH:mm"));
    }
    if (time.date().daysTo(today) == 1) {
        return QStringLiteral("Yesterday");
    }
    return inEnglish(time, time.date().year() == today.year() ? QStringLiteral("d MMM") : QStringLiteral("d MMM yyyy"));
}

QString fullDateText(NSDate date) {
    return inEnglish(localTime(date), QStringLiteral("d MMMM yyyy, HH:mm"));
}
