// SPDX-License-Identifier: MIT
// Another program, run by a test.
#pragma once

#include <csignal>
#include <cstdlib>
#include <spawn.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

#include <gtest/gtest.h>

/// Runs until it is waited for or destroyed, which kills it.
class ChildProgram {
public:
    explicit ChildProgram(std::vector<std::string> command) {
        // So that sanitizers let it die of its signals.
        const char* options = "handle_segv=0:handle_sigbus=0:handle_abort=0:handle_sigill=0:handle_sigfpe=0:"
                              "handle_sigtrap=0:detect_leaks=0:disable_coredump=1";
        for (const char* variable : {"ASAN_OPTIONS", "UBSAN_OPTIONS", "TSAN_OPTIONS"}) {
            ::setenv(variable, options, 1);
        }
        int ends[2] = {-1, -1};
        EXPECT_EQ(::pipe(ends), 0);
        posix_spawn_file_actions_t actions;
        ::posix_spawn_file_actions_init(&actions);
        ::posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
        ::posix_spawn_file_actions_addclose(&actions, ends[0]);
        ::posix_spawn_file_actions_addclose(&actions, ends[1]);
        std::vector<char*> arguments;
        arguments.reserve(command.size() + 1);
        for (std::string& argument : command) {
            arguments.push_back(argument.data());
        }
        arguments.push_back(nullptr);
        if (::posix_spawn(&m_process, arguments[0], &actions, nullptr, arguments.data(), ::environ) != 0) {
            m_process = 0;
            ADD_FAILURE() << "cannot start " << command[0];
        }
        ::posix_spawn_file_actions_destroy(&actions);
        ::close(ends[1]);
        m_output = ends[0];
    }
    ChildProgram(const ChildProgram&) = delete;
    ChildProgram& operator=(const ChildProgram&) = delete;
    ~ChildProgram() {
        ::close(m_output);
        if (m_process > 0) {
            ::kill(m_process, SIGKILL);
            end();
        }
    }

    [[nodiscard]] pid_t process() const { return m_process; }

    /// One line of what it prints.
    [[nodiscard]] std::string line() const {
        std::string text;
        char character = 0;
        while (::read(m_output, &character, 1) == 1 && character != '\n') {
            text += character;
        }
        return text;
    }

    /// Its exit status, or −signal.
    int end() {
        int status = 0;
        EXPECT_EQ(::waitpid(m_process, &status, 0), m_process);
        m_process = 0;
        return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
    }

private:
    pid_t m_process = 0;
    int m_output = -1;
};
