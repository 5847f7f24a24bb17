#include "support/tds/answer.h"

namespace tk::test::tds {
namespace {

enum : std::uint8_t {
    kReturnStatus = 0x79,
    kColumns = 0x81,
    kError = 0xAA,
    kInfo = 0xAB,
    kReturnValue = 0xAC,
    kLoginAck = 0xAD,
    kRow = 0xD1,
    kEnvironment = 0xE3,
    kDone = 0xFD,
    kDoneCall = 0xFE,
    kDoneInCall = 0xFF,
};

enum : unsigned { kMore = 1, kHasError = 2, kHasCount = 0x10, kIsAttention = 0x20 };

enum : std::uint8_t {
    kDatabase = 1,
    kLanguage = 2,
    kPacketSize = 4,
    kSortOrder = 7,
    kBegun = 8,
    kCommitted = 9,
    kRolledBack = 10,
};

constexpr char kServerName[] = "TDSTEST";
constexpr char kProduct[] = "Microsoft SQL Server";
constexpr std::size_t kEnoughToSend = 64 * 1024;

std::string Texts(std::string_view now, std::string_view before) {
    ByteWriter body;
    body.ShortText(now).ShortText(before);
    return body.Bytes();
}

}  // namespace

ByteWriter& Answer::Begin(std::uint8_t token) {
    FlushEnding(false);
    return out_.U8(token);
}

void Answer::SendFull() {
    if (out_.Bytes().size() < kEnoughToSend) return;
    if (!packets_.Write(out_.Bytes(), false)) throw Cancelled();
}

void Answer::Columns(std::span<const ResultColumn> columns) {
    constexpr unsigned kNullable = 1, kMayBeWritten = 8, kIdentity = 0x10;
    Begin(kColumns).U16(columns.size());
    for (const ResultColumn& column : columns) {
        out_.U32(0).U16((column.isNullable ? kNullable : 0) | (column.isIdentity ? kIdentity : kMayBeWritten));
        WriteType(out_, column.type);
        const auto token = column.type.token;
        if (token == Token::Text || token == Token::NText || token == Token::Image) {
            out_.U8(1).LongText(column.table);
        }
        out_.ShortText(column.name);
    }
}

void Answer::Row(std::span<const ResultColumn> columns, std::span<const Cell> cells) {
    ByteWriter row;
    for (std::size_t i = 0; i < columns.size(); ++i)
        WriteCell(row, columns[i].type, cells[i]);
    Begin(kRow).Raw(row.Bytes());
    SendFull();
}

void Answer::Message(std::uint8_t token, const SqlError& error) {
    ByteWriter body;
    body.U32(static_cast<std::uint32_t>(error.number)).U8(error.state).U8(error.level);
    body.LongText(error.text).ShortText(kServerName).ShortText("").U32(1);
    Begin(token).U16(body.Bytes().size()).Raw(body.Bytes());
}

void Answer::Error(const SqlError& error) {
    Message(kError, error);
}

void Answer::Info(std::int32_t number, const std::string& text) {
    Message(kInfo, SqlError(number, text, 0));
}

void Answer::Done(Did did, std::optional<std::uint64_t> count, bool isError) {
    FlushEnding(false);
    ending_ = Ending{(count ? kHasCount : 0u) | (isError ? kHasError : 0u), did, count.value_or(0)};
}

void Answer::SendEnding(std::uint8_t token, const Ending& ending) {
    out_.U8(token).U16(ending.status).U16(static_cast<std::uint16_t>(ending.did)).U64(ending.count);
}

void Answer::FlushEnding(bool isLast) {
    if (!ending_) return;
    Ending ending = *ending_;
    ending_.reset();
    // Within a call something always follows: its status.
    if (!isLast || isCall_) ending.status |= kMore;
    SendEnding(isCall_ ? kDoneInCall : kDone, ending);
}

void Answer::ReturnStatus(std::int32_t status) {
    Begin(kReturnStatus).U32(static_cast<std::uint32_t>(status));
}

void Answer::ReturnValue(const std::string& name, const WireType& type, const Cell& cell) {
    constexpr unsigned kOutputParameter = 1;
    ByteWriter content;
    WriteType(content, type);
    WriteCell(content, type, cell);
    Begin(kReturnValue).U16(0).ShortText(name).U8(kOutputParameter).U32(0).U16(0).Raw(content.Bytes());
}

void Answer::EndCall() {
    FlushEnding(false);
    SendEnding(kDoneCall, {0, Did::Other, 0});
}

void Answer::LoginAck() {
    constexpr std::string_view kVersionOfProtocol("\x74\x00\x00\x04", 4);
    constexpr std::string_view kVersionOfServer("\x0F\x00\x07\xD0", 4);  // 15.0.2000
    ByteWriter body;
    body.U8(1).Raw(kVersionOfProtocol).ShortText(kProduct).Raw(kVersionOfServer);
    Begin(kLoginAck).U16(body.Bytes().size()).Raw(body.Bytes());
}

void Answer::Environment(std::uint8_t kind, std::string_view body) {
    Begin(kEnvironment).U16(body.size() + 1).U8(kind).Raw(body);
}

void Answer::DatabaseIs(const std::string& database) {
    Environment(kDatabase, Texts(database, database));
}
void Answer::LanguageIs(const std::string& language) {
    Environment(kLanguage, Texts(language, ""));
}
void Answer::CollationIs() {
    Environment(kSortOrder, {"\x05\x04\x08\xD0\x00\x00\x00", 7});
}
void Answer::PacketSizeIs(std::uint32_t size) {
    Environment(kPacketSize, Texts(std::to_string(size), "4096"));
}
void Answer::TransactionBegins(std::uint64_t number) {
    ByteWriter body;
    body.U8(sizeof number).U64(number).U8(0);
    Environment(kBegun, body.Bytes());
}
void Answer::TransactionEnds(std::uint64_t number, bool isCommitted) {
    ByteWriter body;
    body.U8(0).U8(sizeof number).U64(number);
    Environment(isCommitted ? kCommitted : kRolledBack, body.Bytes());
}

bool Answer::End() {
    FlushEnding(true);
    if (out_.Bytes().empty()) SendEnding(kDone, {0, Did::Other, 0});
    return packets_.Write(out_.Bytes(), true);
}

bool Answer::EndCancelled() {
    FlushEnding(false);
    SendEnding(kDone, {kIsAttention, Did::Other, 0});
    return packets_.Write(out_.Bytes(), true);
}

}  // namespace tk::test::tds
