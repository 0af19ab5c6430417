// Whole operations of the program that stop, or meet an error, at each of their system calls in turn; then the program
// starts again.

#include "tests/contract/files/ScratchFolders.h"
#include "tests/sweeps/WholeOperations.h"

#include <cstdlib>
#include <numeric>
#include <vector>

namespace letterloft {
namespace {

using Fault = FaultyCalls::Fault;

class OperationSweep : public testing::TestWithParam<Operation> {
protected:
    // All calls, or some that lie evenly, the first of which differs from operation to operation and from fault to
    // fault.
    std::vector<int> calls(std::size_t evenly, Fault fault) const {
        std::vector<int> all(static_cast<std::size_t>(trial_.points()));
        std::iota(all.begin(), all.end(), 1);
        if (fault == Fault::isCutShort) all = trial_.cuttable();
        const std::size_t step = isFull_ ? 1 : all.size() / evenly + 1;
        std::vector<int> calls;
        for (std::size_t at = (all.size() + static_cast<std::size_t>(fault)) % step; at < all.size(); at += step)
            calls.push_back(all[at]);
        return calls;
    }

    // Two of the next switches at every point, or one at some of them.
    int nextSwitches() {
        ++points_;
        return isFull_ ? 2 : points_ % 8 == 0;
    }

    void TearDown() override { RecordProperty("points", points_); }

    int points_ = 0;
    const bool isFull_ = std::getenv("LETTERLOFT_FULL_SWEEP") != nullptr;
    ScratchFolders scratch_;
    OperationTrial trial_{GetParam(), scratch_.onMemory(), scratch_.onDisk()};
};

TEST_P(OperationSweep, StopsOrMeetsAnErrorAtAnyCall) {
    for (const Fault fault : {Fault::failsFromThenOn, Fault::fails, Fault::isCutShort}) {
        for (const int at : calls(180, fault)) {
            SCOPED_TRACE(testing::Message() << "fault " << static_cast<int>(fault) << " at " << at);
            trial_.home().make();
            const auto outcome = trial_.failsAt(fault, at);
            trial_.expectNothingLost(outcome);
            if (fault == Fault::isCutShort) trial_.expectDone();
            trial_.expectRecovery(nextSwitches(), outcome);
            if (HasFailure()) return;
        }
    }
}

TEST_P(OperationSweep, DiesAndDiesAgainWhenItStarts) {
    const int step = isFull_ ? 97 : 29; // from everywhere, so that all calls of a start have their turn
    for (const int at : calls(6, Fault::ends)) {
        bool died = true;
        for (int again = 1 + at % step; died && !HasFailure(); again += step) {
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
