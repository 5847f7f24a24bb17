#include "support/tds/tds_connection.h"

#include <cstdio>

#include "support/tds/login.h"
#include "support/tds/messages.h"

namespace tk::test::tds {
namespace {

constexpr int kLoginSeconds = 10;

enum : std::uint16_t { kBegin = 5, kCommit = 7, kRollback = 8 };
constexpr std::uint8_t kBeginAgain = 1;

}  // namespace

void TdsConnection::Serve() {
    try {
        packets_.SetPatience(kLoginSeconds);
        if (!LogIn()) return;
        packets_.SetPatience(0);
        Talk();
    } catch (const ProtocolError&) {
        // Not worth an answer: the connection ends.
    } catch (const Cancelled&) {
        // The other side was gone before its answer was complete.
    } catch (const std::exception& error) {
        std::fprintf(stderr, "TDS server: %s\n", error.what());
    }
}

bool TdsConnection::LogIn() {
    auto message = packets_.Read();
    if (message && message->type == PacketType::PreLogin) {
        std::string bytes = PreLoginAnswer();
        if (!packets_.Write(bytes, true)) return false;
        message = packets_.Read();
    }
    return message && message->type == PacketType::Login && Admit(*message);
}

bool TdsConnection::Admit(const Message& message) {
    const Login login = ReadLogin(message.bytes);
    Answer answer(packets_);
    const auto refuse = [&](const SqlError& error) {
        answer.Error(error);
        answer.Done(Did::Other, std::nullopt, true);
        answer.End();
        return false;
    };
    if (login.user != settings_.user || login.password != settings_.password) return refuse(LoginError(login.user));
    if (!login.database.empty() && login.database != settings_.database) {
        return refuse(NoDatabaseError(login.database));
    }
    session_ = std::make_unique<SqlSession>(settings_, packets_);
    answer.DatabaseIs(settings_.database);
    answer.Info(5701, "已将数据库上下文更改为 '" + settings_.database + "'。");
    answer.CollationIs();
    answer.LanguageIs("简体中文");
    answer.LoginAck();
    packets_.SetPacketSize(login.packetSize);
    answer.PacketSizeIs(packets_.PacketSize());
    answer.Done(Did::Other, std::nullopt);
    return answer.End();
}

void TdsConnection::Talk() {
    while (const auto message = packets_.Read()) {
        if (!Reply(*message)) return;
    }
}

bool TdsConnection::Reply(const Message& message) {
    Answer answer(packets_);
    try {
        switch (message.type) {
            case PacketType::Batch:
                session_->RunBatch(Utf16ToUtf8(WithoutHeaders(message.bytes)), {}, answer);
                break;
            case PacketType::Call:
                answer.Start(true);
                for (Call& call : ReadCalls(WithoutHeaders(message.bytes)))
                    session_->RunCall(call, answer);
                break;
            case PacketType::Transaction:
                RunTransaction(WithoutHeaders(message.bytes), answer);
                break;
            case PacketType::Attention:  // too late: its statement is done
                return answer.EndCancelled();
            default:
                return false;
        }
    } catch (const Cancelled&) {
        const auto wish = packets_.Read();
        return wish && wish->type == PacketType::Attention && answer.EndCancelled();
    }
    return answer.End();
}

void TdsConnection::RunTransaction(std::string_view request, Answer& answer) {
    ByteReader in(request);
    const std::uint16_t kind = in.U16();
    try {
        if (kind == kBegin) {
            BeginTransaction(answer);
        } else if (kind == kCommit || kind == kRollback) {
            in.Text(in.U8());
            const bool beginsAgain = in.U8() == kBeginAgain;
            EndTransaction(kind == kCommit, answer);
            if (beginsAgain) BeginTransaction(answer);
        } else {
            throw SqlError(3971, "此服务器不支持该事务管理器请求。");
        }
        answer.Done(Did::Other, std::nullopt);
    } catch (const SqlError& error) {
        answer.Error(error);
        answer.Done(Did::Other, std::nullopt, true);
    }
}

void TdsConnection::BeginTransaction(Answer& answer) {
    session_->Begin();
    answer.TransactionBegins(++transaction_);
}

void TdsConnection::EndTransaction(bool isCommitted, Answer& answer) {
    session_->End(isCommitted);
    answer.TransactionEnds(transaction_, isCommitted);
}

}  // namespace tk::test::tds
