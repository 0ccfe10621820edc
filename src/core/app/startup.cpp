#include "startup.h"

#include "texts/texts.h"
#include "runner/versioncompare.h"

namespace Kestrun::StartUp {

LaunchMode launchMode(const QStringList &arguments)
{
    const qsizetype at = arguments.indexOf(QStringLiteral("--self-test"));
    if (at < 0)
        return {};
    LaunchMode mode{true, std::nullopt};
    if (at + 1 < arguments.size())
        mode.solutionsPath = arguments[at + 1];
    return mode;
}

RunnerState runnerState(const std::optional<Toolchain> &toolchain)
{
    if (!toolchain)
        return RunnerState::unavailable(Texts::get(Text::noCompiler));
    const QString &v = toolchain->version;
    if (compareVersions(v, Toolchain::minimumVersion) < 0)
        return RunnerState::unavailable(Texts::get(Text::compilerTooOld).arg(v));
    if (compareVersions(v, QStringLiteral("6.4")) < 0)
        return RunnerState::ready(Texts::get(Text::compilerBelow64).arg(v));
    return RunnerState::ready(Texts::get(Text::compilerReady).arg(v));
}

} // namespace Kestrun::StartUp
