// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/panel/ElidedLabel.h"
#include "tests/app/panel/PanelWorld.h"

#include <QApplication>
#include <QKeyEvent>

#include <gtest/gtest.h>
#include <memory>

namespace zofra::test {

/// Children of the panel of one kind, in tab order of their making.
template<typename Part>
QList<Part*> partsOf(const QWidget& view) {
    QList<Part*> found;
    const auto children = view.findChildren<QWidget*>();
    for (QWidget* child : children) {
        if (auto* part = dynamic_cast<Part*>(child))
            found << part;
    }
    return found;
}

template<typename Part>
Part* partOf(const QWidget& view) {
    const QList<Part*> all = partsOf<Part>(view);
    return all.isEmpty() ? nullptr : all.first();
}

inline void press(QWidget* widget, int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
    QKeyEvent down(QEvent::KeyPress, key, modifiers);
    QKeyEvent up(QEvent::KeyRelease, key, modifiers);
    QApplication::sendEvent(widget, &down);
    QApplication::sendEvent(widget, &up);
}

/// A panel on the screen of a world that the test moves.
class PanelViewTest : public ::testing::Test {
protected:
    void showPanel() {
        view = world.makeView();
        view->show();
        view->activateWindow();
        world.settle();
    }
    QStringList shownTexts() const {
        QStringList texts;
        for (const ElidedLabel* label : partsOf<ElidedLabel>(*view)) {
            if (label->isVisibleTo(view.get()))
                texts << label->content();
        }
        return texts;
    }

    PanelWorld world;
    std::unique_ptr<AboutPopupView> view;
};

} // namespace zofra::test
