#include "ado/odbc/odbc_api.h"

#include <atomic>

namespace tk::ado {
namespace {

constinit const OdbcApi kDriverManager;
constinit std::atomic<const OdbcApi*> current = &kDriverManager;

}  // namespace

const OdbcApi& Odbc() noexcept {
    return *current.load(std::memory_order_acquire);
}

const OdbcApi& SetOdbcForTest(const OdbcApi& api) noexcept {
    return *current.exchange(&api, std::memory_order_acq_rel);
}

}  // namespace tk::ado
