// The client: faults in memory that its server may only read.
#include <sys/mman.h>

#include <memory>

#include "session/client_fixture.h"

namespace tk::test {
namespace {

/// A server that is closed and cannot be written any more.
class SealedServer {
public:
    SealedServer()
        : memory_(mmap(nullptr, sizeof(CTDataServer), PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0)),
          server_(std::construct_at(static_cast<CTDataServer*>(memory_))) {
        mprotect(memory_, sizeof(CTDataServer), PROT_READ);
    }
    SealedServer(const SealedServer&) = delete;
    SealedServer& operator=(const SealedServer&) = delete;
    ~SealedServer() {
        mprotect(memory_, sizeof(CTDataServer), PROT_READ | PROT_WRITE);
        std::destroy_at(server_);
        munmap(memory_, sizeof(CTDataServer));
    }
    CTDataServer* Get() const { return server_; }

private:
    void* memory_;
    CTDataServer* server_;
};

TEST_F(DataClient, AFaultInTheClientsOwnPartOfAQuestionNamesOnePlace) {
    const SealedServer sealed;
    CTDataClient lost;
    lost.Invoke(sealed.Get());  // closed, and cannot be asked for the reason
    const struct {
        const char* label;
        std::string (*call)(CTDataClient&);
    } kRows[] = {
        {"GetDbmsName", [](CTDataClient& c) { return std::string(c.GetDbmsName()); }},
        {"GetSpecialValue", [](CTDataClient& c) { return std::string(c.GetSpecialValue("q", "A")); }},
        {"GetRecordValues", [](CTDataClient& c) { return std::string(c.GetRecordValues("q", "|")); }},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        lost.SetLastErrorString("");
        EXPECT_EQ(row.call(lost), "");
        EXPECT_STREQ(lost.GetLastErrorString(), ClientFault("GetDbmsName").c_str());
        EXPECT_THAT(TakeLog(), ElementsAre(ErrorRecord(ClientFault("GetDbmsName"))));
    }
    lost.Invoke(nullptr);
}

#ifndef __SANITIZE_ADDRESS__  // with it comes a sanitizer that looks into such an object before it faults
TEST_F(DataClient, AMemberOfAClientThatIsGoneTellsOfAFault) {
    void* const memory = mmap(nullptr, sizeof(CTDataClient), PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    ASSERT_NE(memory, MAP_FAILED);
    auto& gone = *static_cast<CTDataClient*>(memory);
    EXPECT_FALSE(gone.ExecuteSQL("delete from item"));
    EXPECT_THAT(TakeLog(), ElementsAre(ErrorRecord(ClientFault("ExecuteSQL")), ErrorRecord(ClientFault("EndTrans"))));
    munmap(memory, sizeof(CTDataClient));
}
#endif

}  // namespace
}  // namespace tk::test
