// SPDX-License-Identifier: MIT
// The gallery's application object and window, for tests.
#pragma once

#include "GalleryApplication.h"
#include "GalleryWindow.h"

#include <gtest/gtest.h>

class GalleryHost : public testing::Test {
protected:
    static inline char s_name[] = "gallery";
    static inline char* s_argv[] = {s_name, nullptr};
    static inline int s_argc = 1;

    GalleryApplication application{s_argc, s_argv};
};
