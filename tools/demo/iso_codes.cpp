#include "tools/demo/iso_codes.h"

#include <fstream>
#include <nlohmann/json.hpp>
#include <stdexcept>

#include "tools/demo/gettext_catalog.h"

namespace tk::tools {
namespace {

// One list: its entries and the catalogue of their Chinese names.
class List {
public:
    List(const std::string& share, const std::string& name)
        : catalog_(share + "/locale/zh_CN/LC_MESSAGES/iso_" + name + ".mo") {
        const std::string file = share + "/iso-codes/json/iso_" + name + ".json";
        std::ifstream input(file);
        const auto document = nlohmann::json::parse(input, nullptr, false);
        if (!document.contains(name)) throw std::runtime_error("cannot read " + file);
        entries_ = document[name];
    }

    const nlohmann::json& Entries() const { return entries_; }
    std::string Chinese(const std::string& english) const { return std::string(catalog_.Find(english)); }

private:
    GettextCatalog catalog_;
    nlohmann::json entries_;
};

}  // namespace

IsoCodes LoadIsoCodes(const std::string& shareFolder) {
    IsoCodes codes;
    const List countries(shareFolder, "3166-1");
    for (const auto& entry : countries.Entries()) {
        const std::string name = entry["name"];
        codes.countries.push_back({entry["alpha_2"], std::stoi(entry["numeric"].get<std::string>()), name,
                                   countries.Chinese(entry.value("common_name", name))});
    }
    const List subdivisions(shareFolder, "3166-2");
    for (const auto& entry : subdivisions.Entries()) {
        const std::string code = entry["code"];
        codes.subdivisions.push_back(
            {code, code.substr(0, code.find('-')), entry["type"], entry["name"], subdivisions.Chinese(entry["name"])});
    }
    const List currencies(shareFolder, "4217");
    for (const auto& entry : currencies.Entries()) {
        codes.currencies.push_back({entry["alpha_3"], std::stoi(entry["numeric"].get<std::string>()), entry["name"],
                                    currencies.Chinese(entry["name"])});
    }
    return codes;
}

}  // namespace tk::tools
