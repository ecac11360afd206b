#pragma once
#include <meridex/frame/Error.h>

namespace meridex::test {

// The Error a call throws, or one numbered 0 when it throws none, so a case
// compares the number, source and description (what()) in one line.
template <typename Call> Error ThrownError(Call&& call) {
    try {
        call();
    } catch (const Error& e) {
        return e;
    }
    return Error(0, "", "nothing thrown");
}

}  // namespace meridex::test
