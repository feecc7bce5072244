// Debug list of the large objects that are alive, by name. Owned by whoever hands the objects out; not
// thread-safe. A name may be registered more than once and is then listed as often.
#pragma once

#include <map>
#include <string>

#include "foundation/types.hpp"

namespace znp {

class ActiveAllocations {
  public:
    void add(const std::wstring& name) { ++counts_[name]; }
    void remove(const std::wstring& name);  // no effect when the name is not registered
    bool empty() const { return counts_.empty(); }

    // "List of Active Allocations:" in white, then a line for each name, in order, in color.
    void print(char color = 'w') const;

  private:
    std::map<std::wstring, u64_t> counts_;
};

}  // namespace znp
