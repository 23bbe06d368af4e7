// The catalogue of script functions and the companions it yields: names,
// help records built afresh from the one declaration, arity and uniqueness.
#include <gtest/gtest.h>

#include <map>
#include <set>
#include <string>
#include <string_view>

#include "plugin/catalogue.h"

namespace {

const icp::Function* find(std::string_view export_name) {
    for (const icp::Function* f : icp::catalogue())
        if (export_name == f->export_name) return f;
    return nullptr;
}

TEST(Catalogue, CompanionsReturnTheEntrysNameAndHelpRecord) {
    const auto all = icp::catalogue();
    ASSERT_FALSE(all.empty());
    for (const icp::Function* f : all) {
        SCOPED_TRACE(f->export_name);
        ASSERT_GE(f->help.size(), 2u);
        ASSERT_LE(f->help.size(), 7u);

        const icp::nvValue name = f->name();
        EXPECT_TRUE(name.isString());
        EXPECT_EQ(name.toString(), f->script_name);

        const icp::nvValue record = f->description();
        ASSERT_TRUE(record.isVector());
        ASSERT_EQ(record.size(), f->help.size());
        EXPECT_EQ(record.size() - 2, f->arity()) << "the host calls the body with this many arguments";
        for (unsigned i = 0; i < record.size(); ++i) {
            SCOPED_TRACE(i);
            EXPECT_TRUE(record.value(i).isString());
            EXPECT_EQ(record.value(i).toString(), f->help[i]);
        }
        // Stateless: a second call builds the same record afresh.
        EXPECT_EQ(f->description().repr(), record.repr());
    }
}

TEST(Catalogue, ExportAndScriptNamesAreUnique) {
    std::set<std::string_view> exports, scripts;
    for (const icp::Function* f : icp::catalogue()) {
        EXPECT_TRUE(exports.insert(f->export_name).second) << "export twice: " << f->export_name;
        EXPECT_TRUE(scripts.insert(f->script_name).second) << "script name twice: " << f->script_name;
    }
}

// "ICPUSB_PI_SetTypeCodes" shows the analog input help record.
TEST(Catalogue, PulseInputTypeCodesShareTheAnalogInputHelp) {
    const icp::Function* ai = find("icpusb_ai_settypecodes");
    const icp::Function* pi = find("icpusb_pi_settypecodes");
    if (!ai || !pi) GTEST_SKIP() << "the analog and pulse input groups are not both in the catalogue yet";
    EXPECT_EQ(pi->description().repr(),
              "[\"Analog input function - Set type code for all channels\", \"Boolean\", \"Device handle\", "
              "\"Vector. The integer array of type code to set\"]");
    EXPECT_EQ(pi->description().repr(), ai->description().repr());
}

// The whole catalogue: 141 USB functions, 44 serial ones and "ICP_Loaded",
// with help records of 2 to 7 items in these numbers.
TEST(Catalogue, Complete) {
    const auto all = icp::catalogue();
    if (all.size() != 186) GTEST_SKIP() << all.size() << " of 186 functions in the catalogue so far";
    std::map<std::string, int> prefixes;
    std::map<std::size_t, int> items;
    for (const icp::Function* f : all) {
        ++prefixes[std::string(f->export_name).substr(0, 7)];
        ++items[f->help.size()];
    }
    EXPECT_EQ(prefixes, (std::map<std::string, int>{{"icpusb_", 141}, {"icpcom_", 44}, {"plugin_", 1}}));
    EXPECT_EQ(items, (std::map<std::size_t, int>{{2, 4}, {3, 72}, {4, 63}, {5, 28}, {6, 14}, {7, 5}}));
    for (const char* two : {"plugin_icp_loaded", "icpusb_listdevice", "icpcom_rec_cmd_start", "icpcom_rec_cmd_stop"}) {
        SCOPED_TRACE(two);
        ASSERT_NE(find(two), nullptr);
        EXPECT_EQ(find(two)->help.size(), 2u);
    }
}

}  // namespace
