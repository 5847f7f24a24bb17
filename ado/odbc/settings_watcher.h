// ado/odbc/settings_watcher.h - who has to ask something before the meaning of names changes on a session.
#pragma once

namespace tk::ado {

class SettingsWatcher {
public:
    virtual ~SettingsWatcher() = default;

    /// On the session's thread, before a statement that may change its settings; may run statements of its own.
    virtual void BeforeSettingsChange() noexcept = 0;
};

}  // namespace tk::ado
