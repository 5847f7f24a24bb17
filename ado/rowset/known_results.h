// ado/rowset/known_results.h - results that a connection has described before.
//
// A driver may search all columns of a table in its memory, several times, to describe one of them: a row of a wide
// table costs less than its description. Names of types, sizes and digits are told without a search. They, with the
// text, tell whether a result has the columns that it had the last time.
//
// What they do not tell is whether a column may be NULL. That can be what it was up to a second ago when another
// session changes it; what this session does is known (Forget).
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
    /// The columns of the handle's result, when it is as the last one of this form; null else.
    /// @param form  of the statement's text; not 0
    std::shared_ptr<const ResultShape> Recognise(StatementHandle& handle, std::uint64_t form, int count) const;

    /// @param shape  what the driver has described. It can be recognised from the second time on.
    /// @param sql    the text of the form
    void Remember(StatementHandle& handle, std::uint64_t form, std::string_view sql,
                  std::shared_ptr<const ResultShape> shape);

    /// Tables may have changed, or which ones are meant.
    void Forget() noexcept;

private:
    struct Known {
        std::uint64_t form;
        std::shared_ptr<const ResultShape> shape;
        std::vector<std::string> typeNames;  // empty: met once only
        bool namesItsColumns;                // the text does: they are called the same again
        long long described;                 // when, in milliseconds
    };

    static constexpr std::size_t kKept = 16;
    std::shared_ptr<const Known> Find(std::uint64_t form) const;
    static bool IsAsBefore(StatementHandle& handle, const Known& known, std::size_t column);

    mutable std::mutex mutex_;
    std::array<std::shared_ptr<const Known>, kKept> known_;
};

}  // namespace tk::ado
