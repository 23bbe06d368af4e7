// Every script function's name and help record, letter for letter, against
// records.json; both ways, so that a function added without its record, or
// a record whose function is gone, fails. A record is built afresh at every
// call, so the second one asked for reads the same.
#include <gtest/gtest.h>

#include <map>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "plugin/catalogue.h"
#include "records.h"

namespace {

TEST(Help, EveryFunctionMatchesItsRecord) {
    const auto records = nlohmann::json::parse(help_records_json);
    std::map<std::string, const icp::Function*> functions;
    for (const icp::Function* f : icp::catalogue()) functions[f->export_name] = f;

    for (const auto& r : records) {
        const auto name = r.at("export").get<std::string>();
        SCOPED_TRACE(name);
        const auto it = functions.find(name);
        ASSERT_NE(it, functions.end()) << "a record without its function";
        const icp::Function* f = it->second;
        functions.erase(it);

        EXPECT_EQ(f->name().toString(), r.at("name").get<std::string>());
        const icp::nvValue record = f->description();
        std::vector<std::string> items;
        for (unsigned i = 0; i < record.size(); ++i) items.push_back(record.value(i).toString());
        EXPECT_EQ(items, r.at("help").get<std::vector<std::string>>());
        EXPECT_EQ(f->description().repr(), record.repr()) << "asked for again";
    }
    for (const auto& [name, f] : functions) ADD_FAILURE() << name << " has no record in records.json";
}

}  // namespace
