// ado/cursor/batch_writer.h - sends the pending changes of many rows in one transaction, and gives every row its
// status.
//
//   std::vector<ErrorRecord> failures = BatchWriter(session, store, rules).Send(store.PendingRows());
//
// A row that is refused stays pending and says why in its status; the others are written all the same. Where the
// failure is not the row's own - the connection is lost, the server has ended the transaction, a lock or the time ran
// out - the batch stops there: what the database has kept is written, everything else stays pending.
#pragma once

#include <span>
#include <vector>

#include "ado/cursor/row_writer.h"

namespace tk::ado {

class BatchWriter {
public:
    BatchWriter(std::shared_ptr<Session> session, RowStore& rows, const WriteRules& rules)
        : session_(std::move(session)), rows_(rows), rules_(rules) {}

    /// @param rows  pending ones, sent in this order
    /// @return why rows were not written; empty when all of them were
    /// @throws AdoError when the batch could not begin; nothing has changed then
    std::vector<ErrorRecord> Send(std::span<const std::size_t> rows);

private:
    struct Outcome {
        bool sent = false;
        LONG failure = 0;         // Status bits
        RowWriter::Values known;  // of a row that was inserted
        bool isReread = false;    // once it has been sent
        std::vector<ErrorRecord> why;
    };
    enum class Scope { Row, Rest, Transaction };
    enum class Attempt { Done, Again };

    Attempt TryAll(std::span<const std::size_t> rows);
    void SendOne(RowWriter& writer, std::size_t row, Outcome& outcome) const;
    Scope ScopeOf(const AdoError& error) const;
    void Undo();
    void TakeOver(std::span<const std::size_t> rows);
    void ReadAgain(std::span<const std::size_t> rows);

    std::shared_ptr<Session> session_;
    RowStore& rows_;
    const WriteRules& rules_;
    std::vector<Outcome> outcomes_;
    int attempts_ = 0;
};

}  // namespace tk::ado
