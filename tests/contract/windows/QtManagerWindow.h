#pragma once

#include "platform/qt/QtInterfaceFile.h"
#include "tests/fakes/FakeNotificationCenter.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QDialog>
#include <QTest>

#include <memory>

namespace letterloft {

// The real manager window, without a display.
struct QtManagerWindow {
    QtWindow& window() { return dynamic_cast<QtWindow&>(file->window()); }
    template <typename Child>
    Child& child(const char* name) {
        return *window().widget().findChild<Child*>(QLatin1String{name});
    }

    // The sheet that is on the screen; none if there is none.
    template <typename Sheet = QDialog>
    Sheet* sheet() {
        for (auto* const dialog : window().widget().findChildren<Sheet*>())
            if (dialog->isVisible()) return dialog;
        return nullptr;
    }

    void show() {
        window().makeKeyAndOrderFront();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&window().widget()));
    }

    FakeNotificationCenter notifications;
    QtInterfaceFiles files{notifications};
    InterfaceFiles::Actions actions;
    std::unique_ptr<InterfaceFile> file = files.load("LLAccountWindow", actions);
};

} // namespace letterloft
