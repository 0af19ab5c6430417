#pragma once

#include "platform/Log.h"

#include <QApplication>

#include <memory>
#include <string>

namespace letterloft {

// The first steps of a program with windows, and what comes of those that fail.
class QtStart final {
public:
    // Qt's own application object. Without a display to show anything on, the log says so in one sentence and the
    // process ends with a failure.
    static std::unique_ptr<QApplication> makeApplication(int& argc, char** argv, Log& log);

    // Shows the sentence, as plain text, until the user has seen it. The result is the status to end with.
    static int showFailure(const std::string& sentence);
};

} // namespace letterloft
