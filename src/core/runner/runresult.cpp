#include "runresult.h"

#include <algorithm>

namespace Kestrun {

bool RunResult::passed() const
{
    return compiled && !timedOut && !tests.isEmpty()
        && std::all_of(tests.begin(), tests.end(), [](const TestResult &t) { return t.passed; });
}

} // namespace Kestrun
