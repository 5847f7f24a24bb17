// ado/odbc/parameter_binding.h - parameters of one execution in the form the driver reads them.
#pragma once

#include <deque>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "ado/odbc/parameter.h"
#include "ado/odbc/statement_handle.h"

namespace tk::ado {

/// Binds on construction; outlives the execution; takes the bindings off again when it ends.
class ParameterBinding {
public:
    /// @throws AdoError DataConversion for a VARIANT that no database can take, or the driver's diagnostics
    ParameterBinding(StatementHandle& handle, std::span<const Parameter> parameters);
    ~ParameterBinding();
    ParameterBinding(const ParameterBinding&) = delete;
    ParameterBinding& operator=(const ParameterBinding&) = delete;

    /// The output values; they outlive the binding. Null when there is no output parameter.
    std::shared_ptr<ParameterOutputs> Outputs() const noexcept { return hasOutputs_ ? slots_ : nullptr; }

    /// After the execution: whether one of several has failed although the call succeeded.
    bool HasFailedExecution() const noexcept;

private:
    /// One value and how the driver is told about it.
    struct Slot {
        std::string bytes;  // texts and binaries; the others too, as the C type lays them out
        SQLLEN indicator = 0;
        SQLSMALLINT cType = SQL_C_CHAR;
        SQLSMALLINT sqlType = SQL_VARCHAR;
        SQLULEN size = 0;
        SQLSMALLINT digits = 0;
        SQLSMALLINT direction = SQL_PARAM_INPUT;
    };
    struct Slots final : ParameterOutputs {
        std::deque<Slot> list;  // never moves: the driver keeps the addresses
        void Read(std::size_t place, const Column& column, VARIANT& value) const override;
        std::size_t Count() const noexcept override;
        short CType(std::size_t output) const override;
        void Put(std::size_t output, const std::string* value) override;

    private:
        std::size_t PlaceOf(std::size_t output) const;
    };

    void BindArrays(std::span<const Parameter> parameters);
    [[noreturn]] void ThrowUnbound() const;
    void Read(const Parameter& parameter, Slot& slot) const;
    void ReadOutput(const Parameter& parameter, Slot& slot) const;
    void ReadVariant(const VARIANT& value, const Column* column, Slot& slot) const;
    void ReadCell(const Cell& cell, const Column* column, Slot& slot) const;
    void SetText(std::string text, Slot& slot) const;
    void SetDecimal(std::string digits, Slot& slot) const;
    void SetDate(DATE date, long nanoseconds, const Column* column, Slot& slot) const;
    template <class Value>
    static void SetFixed(Value value, SQLSMALLINT cType, SQLSMALLINT sqlType, SQLULEN size, Slot& slot);

    StatementHandle& handle_;
    std::shared_ptr<Slots> slots_ = std::make_shared<Slots>();
    std::vector<SQLUSMALLINT> states_;  // of each execution, when there are several
    bool hasOutputs_ = false;
};

}  // namespace tk::ado
