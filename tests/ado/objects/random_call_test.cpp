// Every member is there under its ids, and no call, however odd, does more than fail.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <random>

#include "session_test.h"

namespace tk::ado::test {
namespace {

struct Ids {
    WORD kind;
    std::vector<DISPID> ids;
};

constexpr WORD kMethod = DISPATCH_METHOD;
constexpr WORD kGet = DISPATCH_PROPERTYGET;
constexpr WORD kPut = DISPATCH_PROPERTYPUT;
constexpr WORD kPutRef = DISPATCH_PROPERTYPUTREF;

const std::vector<Ids>& ConnectionIds() {
    static const std::vector<Ids> ids = {
        {kGet, {0, 2, 3, 4, 11, 12, 13, 14, 15, 16, 17, 18, 500}},
        {kPut, {0, 2, 3, 12, 13, 14, 15, 16, 17}},
        {kMethod, {5, 6, 7, 8, 9, 10, 19, 21}},
    };
    return ids;
}

const std::vector<Ids>& RecordsetIds() {
    static const std::vector<Ids> ids = {
        {kGet, {0,    500,  1000, 1001, 1002, 1003, 1004, 1005, 1006, 1008, 1009, 1010, 1011, 1026, 1029,
                1030, 1031, 1047, 1048, 1050, 1051, 1053, 1054, 1056, 1061, 1063, 1064, 1067, -8}},
        {kPut,
         {1000, 1001, 1003, 1004, 1005, 1008, 1009, 1011, 1030, 1031, 1047, 1048, 1051, 1053, 1063, 1064, 1067, -8}},
        {kPutRef, {1001, 1011, 1056}},
        {kMethod, {1012, 1013, 1014, 1015, 1016, 1017, 1018, 1019, 1020, 1021, 1022, 1023,       1024,      1025,
                   1034, 1035, 1036, 1049, 1052, 1055, 1057, 1058, 1062, 1065, 1066, 0x60030022, 0x60030030}},
    };
    return ids;
}

const std::vector<Ids>& FieldIds() {
    static const std::vector<Ids> ids = {
        {kGet,
         {0, 500, 1036, 1100, 1102, 1103, 1104, 1105, 1109, 1112, 1113, 1114, 1115, 1116, 0x60030007, 0x60030008,
          0x6003000D}},
        {kPut, {0, 1036, 1102, 1103, 1112, 1113, 1114, 0x60030007, 0x60030008}},
        {kPutRef, {1115, 0x6003000D}},
        {kMethod, {1107, 1108}},
    };
    return ids;
}

const std::vector<Ids>& FieldsIds() {
    static const std::vector<Ids> ids = {
        {kGet, {-4, 0, 1, 0x60020000}},
        {kMethod, {2, 3, 4, 5, 6, 7, 0x60020002, 0x60040000, 0x60040001}},
    };
    return ids;
}

const std::vector<Ids>& PropertiesIds() {
    static const std::vector<Ids> ids = {{kGet, {-4, 0, 1, 0x60020000}}, {kMethod, {2, 0x60020002}}};
    return ids;
}

const std::vector<Ids>& PropertyIds() {
    static const std::vector<Ids> ids = {{kGet, {0, 0x60020002, 0x60020003, 0x60020004}}, {kPut, {0, 0x60020004}}};
    return ids;
}

const std::vector<Ids>& CommandIds() {
    static const std::vector<Ids> ids = {
        {kGet,
         {0, 1, 2, 3, 4, 7, 8, 9, 500, 0x60030000, 0x60030003, 0x60030005, 0x60030007, 0x6003000C, 0x6003000E,
          0x60040000}},
        {kPut, {1, 2, 3, 4, 7, 8, 0x60030000, 0x60030003, 0x60030005, 0x60030007, 0x6003000C, 0x6003000E}},
        {kPutRef, {1, 0x60030000}},
        {kMethod, {5, 6, 10, 0x60030009, 0x6003000A, 0x60040001}},
    };
    return ids;
}

const std::vector<Ids>& ParametersIds() {
    static const std::vector<Ids> ids = {{kGet, {-4, 0, 1, 0x60020000}},
                                         {kMethod, {2, 0x60020002, 0x60030000, 0x60030001}}};
    return ids;
}

const std::vector<Ids>& ParameterIds() {
    static const std::vector<Ids> ids = {
        {kGet,
         {0, 1, 2, 3, 4, 5, 6, 8, 0x60030000, 0x60030004, 0x60030006, 0x60030008, 0x6003000A, 0x6003000C, 0x6003000F}},
        {kPut,
         {0, 1, 2, 3, 4, 5, 6, 8, 0x60030000, 0x60030004, 0x60030006, 0x60030008, 0x6003000A, 0x6003000C, 0x6003000F}},
        {kMethod, {7, 0x6003000E}},
    };
    return ids;
}

/// Some objects of each class, none of them with a database behind it.
struct Subjects {
    Subjects() {
        rows = Object::Create(kRecordsetClass);
        fields = rows.Get(0).Result();
        fields.Call(3, {Text(u"id"), Number(3)});
        fields.Call(3, {Text(u"name"), Number(203), Number(20), Number(0x60)});
        rows.Call(recordset::kOpen);
        for (LONG i = 0; i < 5; ++i) {
            rows.Call(recordset::kAddNew, {Array({Text(u"id"), Text(u"name")}), Array({Number(i), Text(u"中文")})});
            rows.Call(recordset::kUpdate);
        }
        rows.Call(recordset::kMoveFirst);
        field = fields.Get(0, {Number(1)}).Result();
        properties = rows.Get(500).Result();
        property = properties.Get(0, {Number(0)}).Result();
        connection = Object::Create(kConnectionClass);
        command = Object::Create(kCommandClass);
        parameters = command.Get(command::kParameters).Result();
        parameter = command.Call(command::kCreateParameter, {Text(u"p"), Number(3)}).Result();
    }
    Object connection, rows, fields, field, properties, property, command, parameters, parameter;
};

struct Subject {
    const Object& object;
    const std::vector<Ids>& ids;
};

std::vector<Subject> All(const Subjects& subjects) {
    return {{subjects.connection, ConnectionIds()}, {subjects.rows, RecordsetIds()},
            {subjects.fields, FieldsIds()},         {subjects.field, FieldIds()},
            {subjects.properties, PropertiesIds()}, {subjects.property, PropertyIds()},
            {subjects.command, CommandIds()},       {subjects.parameters, ParametersIds()},
            {subjects.parameter, ParameterIds()}};
}

TEST(EveryMember, IsKnownByItsIdsAndKinds) {
    const Subjects subjects;
    for (const Subject& subject : All(subjects)) {
        for (const Ids& kind : subject.ids) {
            for (const DISPID id : kind.ids) {
                // More arguments than any member takes: the member is found, and nothing is done.
                const Outcome outcome = subject.object.Invoke(id, kind.kind, std::vector<Value>(8));
                EXPECT_EQ(outcome.result, DISP_E_BADPARAMCOUNT) << std::hex << id << " kind " << kind.kind;
            }
        }
    }
}

class RandomCalls {
public:
    explicit RandomCalls(unsigned seed) : random_(seed) {}
    unsigned Below(std::size_t limit) { return static_cast<unsigned>(random_() % limit); }

    Value Argument(const Subjects& subjects) {
        static constexpr LONG kNumbers[] = {0, 1, 2, 3, 4, -1, -2, -3, 8, 33, 129, 256, 1000, INT32_MAX, INT32_MIN};
        static constexpr const char16_t* kTexts[] = {u"",        u"id",        u"name",     u"id = 1", u"name LIKE '*'",
                                                     u"id DESC", u"[id",       u"select 1", u"中文",   u"2003-07-04",
                                                     u"1e400",   u"Provider=x"};
        switch (Below(13)) {
            case 0:
                return Value();
            case 1:
                return Value::Null();
            case 2:
                return Omitted();
            case 3:
                return Short(static_cast<SHORT>(Below(5)));
            case 4:
                return Value::Real(Below(8));
            case 5:
                return Value::Real(1e300);
            case 6:
                return Value::Boolean(Below(2) == 0);
            case 7:
                return Array({Number(static_cast<LONG>(Below(6))), Text(kTexts[Below(std::size(kTexts))])});
            case 8:
                return Array({});
            case 9: {
                const auto all = All(subjects);
                const auto subject = all[Below(all.size())];
                return subject.object.AsValue(Below(2) == 0 ? VT_DISPATCH : VT_UNKNOWN);
            }
            case 10: {
                Value null;
                VARIANT* place = null.Out();
                place->vt = VT_BSTR;
                place->bstrVal = nullptr;
                return null;
            }
            case 11:
                return Text(kTexts[Below(std::size(kTexts))]);
            default:
                return Number(kNumbers[Below(std::size(kNumbers))]);
        }
    }

private:
    std::mt19937 random_;
};

/// Random calls save recordsets under names that other tests do not expect to be files.
class FolderOfItsOwn {
public:
    FolderOfItsOwn() {
        std::string path = (std::filesystem::temp_directory_path() / "tk-random-calls-XXXXXX").string();
        EXPECT_NE(mkdtemp(path.data()), nullptr);
        folder_ = path;
        std::filesystem::current_path(folder_);
    }
    ~FolderOfItsOwn() {
        std::filesystem::current_path(before_);
        std::filesystem::remove_all(folder_);
    }
    FolderOfItsOwn(const FolderOfItsOwn&) = delete;
    FolderOfItsOwn& operator=(const FolderOfItsOwn&) = delete;

private:
    std::filesystem::path before_ = std::filesystem::current_path();
    std::filesystem::path folder_;
};

TEST(RandomCalls, FailOrSucceedAndNothingElse) {
    const FolderOfItsOwn folder;
    const unsigned seed = std::random_device{}();
    ::testing::Test::RecordProperty("seed", std::to_string(seed));
    SCOPED_TRACE("seed " + std::to_string(seed));
    RandomCalls random(seed);
    unsigned succeeded = 0;
    for (int round = 0; round < 300; ++round) {
        const Subjects subjects;
        const auto all = All(subjects);
        for (int step = 0; step < 60; ++step) {
            const Subject& subject = all[random.Below(all.size())];
            const Ids& kind = subject.ids[random.Below(subject.ids.size())];
            const DISPID id = random.Below(20) == 0 ? static_cast<DISPID>(random.Below(2000))
                                                    : kind.ids[random.Below(kind.ids.size())];
            std::vector<Value> arguments;
            for (unsigned count = random.Below(6); count > 0; --count)
                arguments.push_back(random.Argument(subjects));
            const bool named = (kind.kind & (kPut | kPutRef)) != 0 && !arguments.empty();
            const Outcome outcome = subject.object.Invoke(id, kind.kind, std::move(arguments), named);
            ASSERT_NE(outcome.result, E_UNEXPECTED) << "id " << id;
            ASSERT_EQ(outcome.result == DISP_E_EXCEPTION, outcome.code != 0) << "id " << id;
            succeeded += outcome.Ok() ? 1 : 0;
        }
    }
    EXPECT_GT(succeeded, 1000u);
}

}  // namespace
}  // namespace tk::ado::test
