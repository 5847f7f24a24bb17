// tests/support/tds/answer.h - the tokens that answers are made of.
//
// Whether a statement was the last is known only behind it: the token that ends it is held back, and goes out with the
// mark "more" as soon as another one follows.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "support/tds/packets.h"
#include "support/tds/sql_error.h"
#include "support/tds/wire_type.h"

namespace tk::test::tds {

struct ResultColumn {
    std::string name;
    WireType type;
    bool isNullable = true;
    bool isIdentity = false;
    std::string table;
};

/// What a finished statement was, in the token that ends it.
enum class Did : std::uint16_t { Other = 0, Select = 0xC1, Insert = 0xC3, Delete = 0xC4, Update = 0xC5 };

class Answer {
public:
    explicit Answer(PacketStream& packets) : packets_(packets) {}

    /// @param isCall  what ends a statement within a call differs from what ends one of a batch
    void Start(bool isCall) { isCall_ = isCall; }

    void Columns(std::span<const ResultColumn> columns);
    /// @throws SqlError when a cell does not fit its column; nothing of the row is sent then
    void Row(std::span<const ResultColumn> columns, std::span<const Cell> cells);
    void Error(const SqlError& error);
    void Info(std::int32_t number, const std::string& text);
    /// @param count  nothing: the statement does not count
    void Done(Did did, std::optional<std::uint64_t> count, bool isError = false);

    void ReturnStatus(std::int32_t status);
    /// @throws SqlError when the value does not fit its type; nothing of it is sent then
    void ReturnValue(const std::string& name, const WireType& type, const Cell& cell);
    void EndCall();

    void LoginAck();
    void DatabaseIs(const std::string& database);
    void LanguageIs(const std::string& language);
    void CollationIs();
    void PacketSizeIs(std::uint32_t size);
    void TransactionBegins(std::uint64_t number);
    void TransactionEnds(std::uint64_t number, bool isCommitted);

    /// Sends the rest. @return whether the other side is still there
    bool End();
    /// As End, for an answer that the other side has asked to end.
    bool EndCancelled();

private:
    struct Ending {
        unsigned status;
        Did did;
        std::uint64_t count;
    };

    ByteWriter& Begin(std::uint8_t token);
    void Message(std::uint8_t token, const SqlError& error);
    void Environment(std::uint8_t kind, std::string_view body);
    void SendEnding(std::uint8_t token, const Ending& ending);
    void FlushEnding(bool isLast);
    void SendFull();

    PacketStream& packets_;
    ByteWriter out_;
    std::optional<Ending> ending_;
    bool isCall_ = false;
};

}  // namespace tk::test::tds
