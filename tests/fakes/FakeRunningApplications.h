#pragma once

#include "platform/RunningApplications.h"
#include "tests/fakes/FakeRunLoop.h"

#include <cassert>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace letterloft {

// Applications whose instances end as an event of the run loop, after they were asked to, unless they refuse.
class FakeRunningApplications final : public RunningApplications {
public:
    struct Instance {
        std::string name;
        bool refuses = false; // stays, though asked, until the test ends it
        bool hasEnded = false;
    };

    explicit FakeRunningApplications(FakeRunLoop& runLoop) : runLoop_{runLoop} {}

    // Starts an instance of the application; the test may set what it does when it is asked to quit.
    std::shared_ptr<Instance> start(const std::string& applicationPath, const std::string& name) {
        auto instance = std::make_shared<Instance>();
        instance->name = name;
        instances_[applicationPath].push_back(instance);
        return instance;
    }

    void end(Instance& instance) {
        if (instance.hasEnded) return;
        instance.hasEnded = true;
        history.push_back("end " + instance.name);
    }

    std::vector<std::unique_ptr<RunningApplication>> runningInstances(const std::string& applicationPath) override {
        history.push_back("look for " + applicationPath);
        std::vector<std::unique_ptr<RunningApplication>> running;
        for (const auto& instance : instances_[applicationPath]) {
            if (!instance->hasEnded) running.push_back(std::make_unique<Running>(*this, instance));
        }
        return running;
    }

    std::vector<std::string> history; // "look for PATH", "ask NAME", "end NAME"

private:
    class Running final : public RunningApplication {
    public:
        Running(FakeRunningApplications& owner, std::shared_ptr<Instance> instance)
            : owner_{owner}, instance_{std::move(instance)} {}

        void terminate() override {
            assert(!wasAsked_); // once for each one handed out
            wasAsked_ = true;
            owner_.history.push_back("ask " + instance_->name);
            if (!instance_->refuses)
                owner_.runLoop_.events.push_back([&owner = owner_, instance = instance_] { owner.end(*instance); });
        }

        bool isTerminated() override { return instance_->hasEnded; }

    private:
        FakeRunningApplications& owner_;
        std::shared_ptr<Instance> instance_;
        bool wasAsked_ = false;
    };

    FakeRunLoop& runLoop_;
    std::map<std::string, std::vector<std::shared_ptr<Instance>>> instances_;
};

} // namespace letterloft
