// Work shared by several processes, told in the order in which one would have done it. Processes, not threads: what a
// hostile message does to one of them stays there, and the settings of the library are each process's own.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

namespace cli {

// What one item of the work gave.
struct Item {
  int exit = 0;
  std::string name;
  std::uint64_t bytesBefore = 0;
  std::string out, err;
};
using SendItem = std::function<void(const Item&)>;

// Runs `work` in `workers` processes; each does the items whose number leaves its own as remainder, in order, and sends
// what they gave. `receive` gets all of them in the order of their numbers. Failure: a process ended early.
void forEachItem(unsigned workers, const std::function<void(unsigned worker, unsigned workers, const SendItem&)>& work,
                 const std::function<void(const Item&)>& receive);

}  // namespace cli
