// SPDX-License-Identifier: MIT
#pragma once

#include <QApplication>
#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QString>
#include <QTest>
#include <QUiLoader>
#include <QWidget>

#include <memory>
#include <stdexcept>

#include <gtest/gtest.h>

/// A program of Qt's, without anything of the kit in its application object.
class PlainQtProgram : public testing::Test {
protected:
    /// The form of that name in this folder, by a loader that knows the plugin where it is `withPlugin`.
    static std::unique_ptr<QWidget> loadForm(const QString& name, bool withPlugin = true) {
        QUiLoader loader;
        if (withPlugin) {
            loader.addPluginPath(QFileInfo(QStringLiteral(DESIGNER_PLUGIN)).path());
        }
        QFile file(QStringLiteral(VXKIT_SOURCE_ROOT "/tests/designer/%1.ui").arg(name));
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        std::unique_ptr<QWidget> form(loader.load(&file));
        EXPECT_TRUE(form) << loader.errorString().toStdString();
        return form;
    }

    template <class T>
    static T& child(const QWidget& form, const QString& name) {
        auto* const found = dynamic_cast<T*>(form.findChild<QWidget*>(name));
        if (!found) {
            throw std::runtime_error("no " + name.toStdString());
        }
        return *found;
    }

    static void show(QWidget& window) {
        window.show();
        window.activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    }
    /// Through the window, as the mouse does it.
    static void click(const QWidget& control) {
        QWidget* const window = control.window();
        QTest::mouseClick(window->windowHandle(), Qt::LeftButton, Qt::NoModifier,
                          control.mapTo(window, control.rect().center()));
    }

    /// Whether there is more to see of `control` than a ground of one colour.
    static bool paints(QWidget& control) {
        const QImage picture = control.grab().toImage();
        for (int y = 0; y < picture.height(); ++y) {
            for (int x = 0; x < picture.width(); ++x) {
                if (picture.pixel(x, y) != picture.pixel(0, 0)) {
                    return true;
                }
            }
        }
        return false;
    }

private:
    static inline int s_argc = 1;
    static inline char s_name[] = "plain";
    static inline char* s_argv[] = {s_name, nullptr};

protected:
    QApplication application{s_argc, s_argv};
};
