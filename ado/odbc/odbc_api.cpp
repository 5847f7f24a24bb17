#include "ado/odbc/odbc_api.h"

namespace tk::ado {

const OdbcApi& SetOdbcForTest(const OdbcApi& api) noexcept {
    return *odbcInUse.exchange(&api, std::memory_order_acq_rel);
}

}  // namespace tk::ado
