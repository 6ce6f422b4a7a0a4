#pragma once

#include <memory>
#include <vector>

/// Makes an object that is there to the end of the process: a driver that is given up uses it where it hangs.
template <class T>
T* MakeKeptToTheEnd() {
    static auto& kept = *new std::vector<std::unique_ptr<T>>;
    return kept.emplace_back(std::make_unique<T>()).get();
}
