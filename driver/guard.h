// guard.h - the one place where a failure of the automation object becomes last-error text and a result.
//
//   return Guard::Run(*this, szSQL, 0, [&] { ...; return 1; });  // context, failure value, work
#pragma once

#include <comdef.h>

#include "afx/kept_last_error.h"
#include "tkkernel/driver.h"

namespace tk::driver {

struct Guard {
    /// Runs work; a framework exception of the given kind is written down, deleted, and answered with the failure
    /// value. Every other exception passes.
    /// @param context  what was being done; null is an empty text
    template <typename Caught = CException, typename Result, typename Work>
    static Result Run(CTDataDriver& driver, const char* context, Result failure, Work&& work) {
        try {
            return work();
        } catch (Caught* e) {
            Deleted deleted{e};
            driver.ThrowException(e, context);
            return failure;
        }
    }

    /// The same for work without a result.
    template <typename Work>
    static void Do(CTDataDriver& driver, const char* context, Work&& work) {
        Run(driver, context, 0, [&] {
            work();
            return 0;
        });
    }

    /// Run for closing: a server built with compiler support may throw its own error object there, whose message
    /// becomes the last-error text as it stands.
    template <typename Result, typename Work>
    static Result Closing(CTDataDriver& driver, const char* context, Result failure, Work&& work) {
        try {
            return Run(driver, context, failure, work);
        } catch (const _com_error& e) {
            const afx::KeptLastError kept;  // its message is looked up, and need not be there
            driver.SetError("%s", e.ErrorMessage());
            return failure;
        }
    }

    /// Closing, for destructors: an exception of any other kind ends here as well, since it would end the program.
    template <typename Work>
    static void Destroying(CTDataDriver& driver, const char* context, Work&& work) {
        try {
            Closing(driver, context, 0, [&] {
                work();
                return 1;
            });
        } catch (...) {
            driver.SetErrorString(context, "");
        }
    }

private:
    struct Deleted {
        CException* e;
        ~Deleted() { e->Delete(); }
    };
};

}  // namespace tk::driver
