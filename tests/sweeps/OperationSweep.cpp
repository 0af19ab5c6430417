// Whole operations of the program that stop, or meet an error, at each of their system calls in turn; then the program
// starts again.

#include "tests/contract/files/ScratchFolders.h"
#include "tests/sweeps/WholeOperations.h"

#include <cstdlib>

namespace letterloft {
namespace {

using Fault = FaultyCalls::Fault;

class OperationSweep : public testing::TestWithParam<Operation> {
protected:
    // Two of the next switches after every stop, or one after some of them.
    int switchesAfter(int at) const { return isFull_ ? 2 : at % 8 == 0; }

    const bool isFull_ = std::getenv("LETTERLOFT_FULL_SWEEP") != nullptr;
    ScratchFolders scratch_;
    OperationTrial trial_{GetParam(), scratch_.onMemory(), scratch_.onDisk()};
};

TEST_P(OperationSweep, StopsOrMeetsAnErrorAtEveryCall) {
    RecordProperty("points", trial_.points());
    for (const Fault fault : {Fault::failsFromThenOn, Fault::fails}) {
        for (int at = 1; at <= trial_.points() && !HasFailure(); ++at) {
            SCOPED_TRACE(testing::Message() << "fault " << static_cast<int>(fault) << " at " << at);
            trial_.home().make();
            const auto outcome = trial_.failsAt(fault, at);
            trial_.expectNothingLost(outcome);
            trial_.expectRecovery(switchesAfter(at), outcome);
        }
    }
}

TEST_P(OperationSweep, DiesAndDiesAgainWhenItStarts) {
    for (int at = 1; at <= trial_.points() && !HasFailure(); at += isFull_ ? 1 : 61) {
        bool died = true;
        for (int again = 1; died && !HasFailure(); again += isFull_ ? 11 : 29) {
            SCOPED_TRACE(testing::Message() << at << ", then " << again);
            trial_.home().make();
            EXPECT_TRUE(trial_.diesAt(at));
            trial_.expectNothingLost();
            died = trial_.startDiesAt(again);
            trial_.expectNothingLost();
            trial_.expectRecovery(switchesAfter(at));
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Of, OperationSweep, testing::ValuesIn(wholeOperations),
                         [](const auto& operation) { return std::string{operation.param.name}; });

} // namespace
} // namespace letterloft
