#include "core/settings/Settings.h"

#include "core/settings/SettingsStore.h"

#include <memory>

namespace {

SettingsStore &instance()
{
    static std::unique_ptr<SettingsStore> store = std::make_unique<SettingsStore>();
    return *store;
}

} // namespace

QSettings &Settings::store()
{
    return instance();
}

void Settings::sync()
{
    instance().writeNow();
}
