// The security settings of the process, settled once.
#pragma once

namespace tk::system {

/// Lets the process settle its security anew; called when the last thread has left its apartment.
void ForgetProcessSecurity() noexcept;

}  // namespace tk::system
