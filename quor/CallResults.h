#pragma once

#include "ValueJson.h"

#include <QuorScriptor/luacall.h>
#include <cstddef>
#include <memory>
#include <string>
#include <vector>

namespace quor {

class CallWatch;

/// Where the results of a call by format go. What the call hands out is freed with this.
class CallResults {
public:
    /// One for every letter of a result.
    explicit CallResults(const std::string& letters);
    ~CallResults();
    CallResults(const CallResults&) = delete;
    CallResults& operator=(const CallResults&) = delete;

    /// Adds the outputs behind the arguments of a call.
    void addTo(std::vector<quorlua::CallItem>& items) const;

    /// Tells after the call which results it gave. The others were of another type than their letter takes.
    void settle(const CallWatch& watch);
    std::size_t notGiven() const;

    // As long as the state lives with what the call left on its stack; `strays` as in ValueJson.h.

    /// An array of objects, each on a line of its own.
    std::string json(std::size_t& strays) const;
    /// A line for each result, in UTF-8; primitives follow on lines of their own.
    std::string lines(std::size_t& strays) const;

private:
    struct Output;
    template<class T>
    struct Plain;
    struct Number;
    struct Text;
    struct Bytes;
    struct Pointer;
    struct Primitives;
    struct Table;
    struct HeapTable;

    static std::unique_ptr<Output> outputOf(char letter);

    std::string letters_;
    std::vector<std::unique_ptr<Output>> outputs_;
    std::vector<bool> given_;
};

} // namespace quor
