#pragma once

#include "platform/NotificationCenter.h"
#include "platform/Window.h"

#include <cassert>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace letterloft {

// What is attached to a window and waits for an answer: an alert or a chooser.
struct FakeSheet {
    struct Button {
        std::string title;
        int code;
    };

    std::string messageText = {};
    std::string informativeText = {};
    std::vector<Button> buttons = {};
    int escapeCode = 0; // what Escape and the sheet's own close answer
    std::function<void(int)> completion = {};
};

// A window without a screen, with at most one sheet.
class FakeWindow final : public Window {
public:
    explicit FakeWindow(NotificationCenter& notifications) : notifications_{notifications} {}

    void makeKeyAndOrderFront() override {
        isVisible = true;
        ++timesOrderedFront;
    }

    void close() override {
        endSheet();
        if (isVisible) notifications_.post(NotificationCenter::windowWillClose, this);
        isVisible = false;
    }

    void endSheet() override { sheet.reset(); }

    // Dropped, if one is there already.
    void attach(FakeSheet newSheet) {
        if (!sheet) sheet = std::make_shared<FakeSheet>(std::move(newSheet));
    }

    // Ends the sheet as the user does: by a button's title, or by Escape. The sheet is gone before its completion runs.
    void press(const std::string& title) {
        assert(sheet);
        for (const FakeSheet::Button& button : sheet->buttons)
            if (button.title == title) return answer(button.code);
        assert(!"the sheet has no such button");
    }

    // The sheet's texts and buttons, one after the other.
    std::string question() const {
        if (!sheet) return "(none)";
        std::string all = sheet->messageText + "|" + sheet->informativeText;
        for (const FakeSheet::Button& button : sheet->buttons)
            all += "|" + button.title;
        return all;
    }

    void pressEscape() {
        assert(sheet);
        answer(sheet->escapeCode);
    }

    bool isVisible = false;
    int timesOrderedFront = 0;
    std::shared_ptr<FakeSheet> sheet;

private:
    void answer(int code) {
        const std::shared_ptr<FakeSheet> ended = std::exchange(sheet, nullptr);
        if (ended->completion) ended->completion(code);
    }

    NotificationCenter& notifications_;
};

} // namespace letterloft
