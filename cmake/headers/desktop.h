// SPDX-License-Identifier: GPL-3.0-or-later
// What the sources that know the desktop read beside those of a bus.
#pragma once

#include "cmake/headers/bus.h"

#include <QApplication>
#include <QMenu>
#include <QPaintEvent>
#include <QPainter>
