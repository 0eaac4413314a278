// SPDX-License-Identifier: MIT
#pragma once

#include <QApplication>

#include <gtest/gtest.h>

#include <array>

/// A test with an application object around it.
class StatusTest : public testing::Test {
private:
    int m_argc = 1;
    std::array<char, 6> m_name{"tests"};
    std::array<char*, 2> m_argv{m_name.data(), nullptr};
    QApplication m_application{m_argc, m_argv.data()};
};
