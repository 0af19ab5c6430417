// Whole operations of the program that stop, or meet an error, at each of their system calls in turn; then the program
// starts again.

#include "tests/contract/files/ScratchFolders.h"
#include "tests/sweeps/WholeOperations.h"

#include <cstdlib>
#include <vector>

namespace letterloft {
namespace {

using Fault = FaultyCalls::Fault;

class OperationSweep : public testing::TestWithParam<Operation> {
protected:
    // All calls, or some that lie evenly, the first of which differs from operation to operation and from fault to
    // fault.
    std::vector<int> calls(int evenly, int fault) const {
        const int step = isFull_ ? 1 : trial_.points() / evenly + 1;
        std::vector<int> calls;
        for (int at = 1 + (trial_.points() + fault) % step; at <= trial_.points(); at += step)
            calls.push_back(at);
        return calls;
    }

    // Two of the next switches after every stop, or one after some of them.
    int nextSwitches() { return isFull_ ? 2 : ++stops_ % 8 == 0; }

    int stops_ = 0;
    const bool isFull_ = std::getenv("LETTERLOFT_FULL_SWEEP") != nullptr;
    ScratchFolders scratch_;
    OperationTrial trial_{GetParam(), scratch_.onMemory(), scratch_.onDisk()};
};

TEST_P(OperationSweep, StopsOrMeetsAnErrorAtAnyCall) {
    RecordProperty("points", trial_.points());
    for (const Fault fault : {Fault::failsFromThenOn, Fault::fails}) {
        for (const int at : calls(200, static_cast<int>(fault))) {
            SCOPED_TRACE(testing::Message() << "fault " << static_cast<int>(fault) << " at " << at);
            trial_.home().make();
            const auto outcome = trial_.failsAt(fault, at);
            trial_.expectNothingLost(outcome);
            trial_.expectRecovery(nextSwitches(), outcome);
            if (HasFailure()) return;
        }
    }
}

TEST_P(OperationSweep, DiesAndDiesAgainWhenItStarts) {
    for (const int at : calls(6, static_cast<int>(Fault::ends))) {
        bool died = true;
        for (int again = 1; died && !HasFailure(); again += isFull_ ? 11 : 29) {
            SCOPED_TRACE(testing::Message() << at << ", then " << again);
            trial_.home().make();
            EXPECT_TRUE(trial_.diesAt(at));
            trial_.expectNothingLost();
            died = trial_.startDiesAt(again);
            trial_.expectNothingLost();
            trial_.expectRecovery(nextSwitches());
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Of, OperationSweep, testing::ValuesIn(wholeOperations),
                         [](const auto& operation) { return std::string{operation.param.name}; });

} // namespace
} // namespace letterloft
