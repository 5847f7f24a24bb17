#include "driver/driver_fixture.h"

namespace tk::test {

namespace {

/// Finds an item as a collection does: by number, or by name whatever its case. null when there is none
Held<ScriptedObject> Find(const std::vector<std::pair<std::string, Held<ScriptedObject>>>& items, const VARIANT& key) {
    if (V_VT(&key) == VT_BSTR) {
        const CString wanted(V_BSTR(&key));
        for (const auto& [name, item] : items) {
            if (wanted.CompareNoCase(name.c_str()) == 0) return item;
        }
        return {};
    }
    const long index = V_VT(&key) == VT_I2 ? V_I2(&key) : V_I4(&key);
    return index < 0 || index >= static_cast<long>(items.size()) ? Held<ScriptedObject>() : items[index].second;
}

using Items = std::vector<std::pair<std::string, Held<ScriptedObject>>>;

void FillCollection(ScriptedObject& collection, Items items) {
    collection.On(Get(1)).Returns(Long(static_cast<long>(items.size())));
    collection.On(Get(0)).Does(
        [items = std::move(items)](const Arguments& arguments) { return Object(Find(items, *arguments.at(0)).Get()); });
}

}  // namespace

Held<ScriptedObject> DriverTest::MakeProperties(std::vector<std::pair<const char*, COleVariant>> items) {
    Items made;
    for (auto& [name, value] : items) {
        auto property = Make("property");
        property->On(Get(0)).Returns(value);
        property->On(Get(0x60020002)).Returns(Text(name));
        made.emplace_back(name, std::move(property));
    }
    auto properties = Make("properties");
    FillCollection(*properties.Get(), std::move(made));
    return properties;
}

Held<ScriptedObject> DriverTest::MakeFields(std::vector<std::pair<const char*, COleVariant>> items) {
    Items made;
    for (auto& [name, value] : items) {
        auto field = Make("field");
        field->On(Get(0)).Returns(value);
        field->On(Get(1100)).Returns(Text(name));
        made.emplace_back(name, std::move(field));
    }
    auto fields = Make("fields");
    FillCollection(*fields.Get(), std::move(made));
    return fields;
}

void DriverTest::Open(CTDatabase& database, std::vector<std::pair<const char*, COleVariant>> properties) {
    connection_->On(Get(18)).Returns(Long(1));
    connection_->On(Get(500)).Returns(Object(MakeProperties(std::move(properties)).Get()));
    connections_->Give(connection_.Get());
    ASSERT_EQ(database.Open("Driver=SQLite3"), 1) << ErrorOf(database);
    journal_.Take();
}

void DriverTest::Bind(CTRecordset& recordset) {
    recordsets_->Give(records_.Get());
    ASSERT_EQ(recordset.OpenDatabase("DSN=stock", "ORA"), 1) << ErrorOf(recordset);
    journal_.Take();
}

}  // namespace tk::test
