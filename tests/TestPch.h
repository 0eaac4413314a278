// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/pch.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
