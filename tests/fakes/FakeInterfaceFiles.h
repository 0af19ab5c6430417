#pragma once

#include "platform/InterfaceFile.h"
#include "tests/fakes/FakeOutlineView.h"
#include "tests/fakes/FakeTableView.h"
#include "tests/fakes/FakeWindow.h"

#include <cassert>
#include <memory>
#include <string>

namespace letterloft {

struct FakeControl final : Sender {
    std::string description() const override { return "button"; }
};

// The window with its two views, as "LLAccountWindow" describes it.
struct FakeInterfaceFile final : InterfaceFile {
    explicit FakeInterfaceFile(NotificationCenter& notifications) : manager{notifications} {}

    Window& window() override { return manager; }
    TableView* tableView(const std::string& outlet) override { return outlet == "tableView" ? &accounts : nullptr; }
    OutlineView* outlineView(const std::string& outlet) override { return outlet == "myView" ? &outline : nullptr; }

    FakeWindow manager;
    FakeTableView accounts;
    FakeOutlineView outline;
};

// Knows the one interface file, whose controls name the six operations.
class FakeInterfaceFiles final : public InterfaceFiles {
public:
    explicit FakeInterfaceFiles(NotificationCenter& notifications) : notifications_{notifications} {}

    std::unique_ptr<InterfaceFile> load(const std::string& name, const Actions& actions) override {
        if (name != "LLAccountWindow") return nullptr;
        for (const char* operation :
             {"insertAccount:", "removeAccount:", "resetAllData:", "insertApp:", "insertFile:", "removeAppOrFile:"})
            assert(actions.count(operation) == 1); // each control has its operation
        ++loads;
        actions_ = actions;
        auto made = std::make_unique<FakeInterfaceFile>(notifications_);
        file = made.get();
        return made;
    }

    // Presses the control that names the operation. A sheet on the window takes it out of reach.
    void press(const std::string& operation) {
        assert(file && !file->manager.sheet);
        FakeControl control;
        actions_.at(operation)(&control);
    }

    FakeInterfaceFile* file = nullptr; // the latest one made; owned by the controller
    int loads = 0;

private:
    NotificationCenter& notifications_;
    Actions actions_;
};

} // namespace letterloft
