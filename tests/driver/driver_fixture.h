// driver_fixture.h - scripted Connection and Recordset objects in place of the real classes, and what they were sent.
//
// Every test ends with a look that no scripted object is left over.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <utility>
#include <vector>

#include "support/registered_class.h"
#include "support/scripted_object.h"
#include "tkkernel/driver.h"

namespace tk::test {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

using Lines = std::vector<std::string>;

/// What a failing member leaves: the failure's own text, a line break, what was being done.
inline std::string Failure(const char* text, const char* context) {
    return std::string(text) + "\r\n" + context;
}

template <typename Wrapper>
std::string ErrorOf(Wrapper& wrapper) {
    return std::string(wrapper.GetLastErrorString());
}

class DriverTest : public ::testing::Test {
protected:
    Held<ScriptedObject> Make(const char* name) { return ScriptedObject::Make(name, &journal_); }

    /// A Properties collection; "properties" and "property" in the journal.
    Held<ScriptedObject> MakeProperties(std::vector<std::pair<const char*, COleVariant>> items);

    /// A Fields collection of one record; "fields" and "field" in the journal.
    Held<ScriptedObject> MakeFields(std::vector<std::pair<const char*, COleVariant>> items);

    /// Opens a database on connection_, whose properties are these; the journal is empty afterwards.
    void Open(CTDatabase& database, std::vector<std::pair<const char*, COleVariant>> properties = {});

    /// Binds a recordset to "DSN=stock" and creates its object, records_; the journal is empty afterwards.
    void Bind(CTRecordset& recordset);

    void TearDown() override {
        connection_ = {};
        records_ = {};
        connections_.reset();
        recordsets_.reset();
        EXPECT_EQ(ScriptedObject::Alive(), aliveBefore_) << "an object is left over";
    }

    int aliveBefore_ = ScriptedObject::Alive();
    Journal journal_;
    Apartment apartment_;
    Held<ScriptedObject> connection_ = Make("connection");
    Held<ScriptedObject> records_ = Make("records");
    std::unique_ptr<RegisteredClass> connections_ = std::make_unique<RegisteredClass>(kConnectionClass);
    std::unique_ptr<RegisteredClass> recordsets_ = std::make_unique<RegisteredClass>(kRecordsetClass);
};

}  // namespace tk::test
