// The process's table of named kernel objects. A name maps to the state that
// every handle of that name shares; the state ends with its last handle, so
// no object outlives the process or its holders.
#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <string>

namespace nvk::os::posix {

template <class State>
class NamedObjects {
public:
    // The state of `name`, made by `make` if it does not exist; `existed`
    // tells which. An empty name always makes a fresh, unnamed state.
    template <class Make>
    std::shared_ptr<State> CreateOrOpen(const char* name, Make make, bool& existed) {
        std::lock_guard guard(lock_);
        existed = false;
        if (name == nullptr || *name == '\0') {
            return make();
        }
        auto& slot = states_[name];
        if (auto state = slot.lock()) {
            existed = true;
            return state;
        }
        auto state = make();
        slot = state;
        return state;
    }

    std::shared_ptr<State> Open(const char* name) {
        std::lock_guard guard(lock_);
        auto it = name == nullptr ? states_.end() : states_.find(name);
        if (it == states_.end()) {
            return nullptr;
        }
        auto state = it->second.lock();
        if (!state) {
            states_.erase(it);
        }
        return state;
    }

private:
    std::mutex lock_;
    std::map<std::string, std::weak_ptr<State>> states_;
};

}  // namespace nvk::os::posix
