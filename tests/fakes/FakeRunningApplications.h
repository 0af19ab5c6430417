#pragma once

#include "platform/RunningApplications.h"
#include "tests/fakes/FakeRunLoop.h"

#include <cassert>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace letterloft {

// Applications whose instances end as an event of the run loop, after they were asked to, unless they refuse.
class FakeRunningApplications final : public RunningApplications {
public:
    struct Instance {
        bool refuses = false; // stays, though asked, until the test ends it
        bool hasEnded = false;
    };

    explicit FakeRunningApplications(FakeRunLoop& runLoop) : runLoop_{runLoop} {}

    // The test may set what the instance does when it is asked to quit.
    std::shared_ptr<Instance> start(const std::string& applicationPath) {
        return instances_[applicationPath].emplace_back(std::make_shared<Instance>());
    }

    std::vector<std::unique_ptr<RunningApplication>> runningInstances(const std::string& applicationPath) override {
        ++looks;
        std::vector<std::unique_ptr<RunningApplication>> running;
        for (const auto& instance : instances_[applicationPath])
            if (!instance->hasEnded) running.push_back(std::make_unique<Running>(runLoop_, instance));
        return running;
    }

    int looks = 0;

private:
    class Running final : public RunningApplication {
    public:
        Running(FakeRunLoop& runLoop, std::shared_ptr<Instance> instance)
            : runLoop_{runLoop}, instance_{std::move(instance)} {}

        void terminate() override {
            assert(!wasAsked_); // once for each one handed out
            wasAsked_ = true;
            if (!instance_->refuses) runLoop_.events.push_back([instance = instance_] { instance->hasEnded = true; });
        }

        bool isTerminated() override { return instance_->hasEnded; }

    private:
        FakeRunLoop& runLoop_;
        std::shared_ptr<Instance> instance_;
        bool wasAsked_ = false;
    };

    FakeRunLoop& runLoop_;
    std::map<std::string, std::vector<std::shared_ptr<Instance>>> instances_;
};

} // namespace letterloft
