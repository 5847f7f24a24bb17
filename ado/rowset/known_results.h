// ado/rowset/known_results.h - results that a connection has described before.
//
// A driver may search all columns of a table in its memory, several times, to describe one of them: a row of a wide
// table costs less than its description. The names of types, sizes and digits are told without a search. They, with the
// form of the text, tell whether a result has the columns that it had the last time.
//
// Two things follow from the text alone, for up to a second: whether a column may be NULL, and whether a 64-bit number
// is computed. They are wrong when the text has come to mean other tables meanwhile, by what another session has done,
// or a function that a statement called. What the session's own texts define is known (Forget).
//
// Threads: any.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "ado/odbc/statement_handle.h"
#include "ado/rowset/result_shape.h"

namespace tk::ado {

class KnownResults {
public:
    /// The columns of the handle's result, when it is as the last one of this form; null else, and when the driver
    /// fails: describing the result says why.
    /// @param form  of the statement's text, which gives one result; not 0
    std::shared_ptr<const ResultShape> Recognise(StatementHandle& handle, std::uint64_t form, int count) noexcept;

    /// Right after the execution: what has been defined since is not in the shape.
    /// @param shape  what the driver has described. It can be recognised from the second time on.
    /// @param sql    the text of the form
    void Remember(StatementHandle& handle, std::uint64_t form, std::string_view sql,
                  const std::shared_ptr<const ResultShape>& shape) noexcept;

    /// Tables may have changed, or which ones are meant.
    void Forget() noexcept;

private:
    struct Known {
        std::shared_ptr<const ResultShape> shape;
        std::vector<std::string> typeNames;  // empty: met once only
        bool namesItsColumns = false;        // the text does: they are called the same again
        std::int64_t described = 0;          // when, by CoarseNow
    };

    static constexpr std::size_t kKept = 32;
    std::size_t PlaceOf(std::uint64_t form) const noexcept;
    std::shared_ptr<const Known> Find(std::uint64_t form) const noexcept;
    void Keep(std::uint64_t form, std::shared_ptr<const Known> known) noexcept;
    static bool IsAsBefore(StatementHandle& handle, const Known& known, std::size_t column) noexcept;

    mutable std::mutex mutex_;
    std::array<std::uint64_t, kKept> forms_{};
    std::array<std::shared_ptr<const Known>, kKept> known_;
    std::size_t oldest_ = 0;  // the next place to be used again
};

}  // namespace tk::ado
