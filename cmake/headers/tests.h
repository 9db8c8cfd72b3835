// SPDX-License-Identifier: GPL-3.0-or-later
// What nearly every unit test reads.
#pragma once

#include "cmake/headers/core.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
