// The catalogue beyond what the help records check (tests/help): names are
// unique, and each help record is built afresh at every call.
#include <gtest/gtest.h>

#include <set>
#include <string_view>

#include "plugin/catalogue.h"

namespace {

TEST(Catalogue, NamesAreUniqueAndRecordsBuiltAfresh) {
    std::set<std::string_view> exports, scripts;
    for (const icp::Function* f : icp::catalogue()) {
        EXPECT_TRUE(exports.insert(f->export_name).second) << "export twice: " << f->export_name;
        EXPECT_TRUE(scripts.insert(f->script_name).second) << "script name twice: " << f->script_name;
        const icp::nvValue record = f->description();
        EXPECT_EQ(f->description().repr(), record.repr()) << f->export_name;
    }
}

}  // namespace
