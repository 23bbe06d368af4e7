// Discovery of the script functions in an export list, reading export
// tables of damaged files, and the help listings.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

#include "icphost/listing.h"
#include "icphost/plugin.h"

namespace {

using Names = std::vector<std::string>;

TEST(Discovery, TakesExportsThatHaveBothCompanionsInTableOrder) {
    struct Case {
        Names exports;
        Names functions;
    };
    const Case cases[] = {
        {{"bDescription", "aName", "b", "aDescription", "a", "bName"}, {"b", "a"}},
        {{"a", "aName"}, {}},
        {{"a", "aDescription"}, {}},
        {{"aName", "aDescription"}, {}},
        // A companion is itself a function only if it has companions.
        {{"x", "xName", "xNameName", "xNameDescription"}, {"xName"}},
        {{"a", "aname", "adescription"}, {}},
        {{}, {}},
    };
    for (const auto& c : cases) {
        Names found;
        const std::vector<std::string_view> exports(c.exports.begin(), c.exports.end());
        for (const auto& t : icphost::find_triples(exports)) {
            EXPECT_EQ(c.exports[t.name], c.exports[t.body] + "Name");
            EXPECT_EQ(c.exports[t.description], c.exports[t.body] + "Description");
            found.push_back(c.exports[t.body]);
        }
        EXPECT_EQ(found, c.functions);
    }
}

// A help record is read on first need; one that cannot be read leaves the
// function unusable, with the reason, every time it is asked for.
TEST(Discovery, UnreadableHelpRecordIsAnErrorWhenNeeded) {
    using namespace NuvarelMath::ValueTypes;
    struct Case {
        icphost::ScriptFunction::Companion describe;
        std::string error;
    };
    const Case cases[] = {
        {[] { return nvValue(nvInteger(3)); }, "fDescription returned 3, not a help record of 2 to 7 items"},
        {[]() -> nvValue { throw std::runtime_error("no record"); }, "f: a companion failed: no record"},
    };
    for (const auto& c : cases) {
        const icphost::ScriptFunction f{.export_name = "f", .name = "F", .describe = c.describe, .record = {}};
        for (int time = 0; time < 2; ++time) {
            try {
                f.arity();
                ADD_FAILURE() << c.error;
            } catch (const std::runtime_error& e) {
                EXPECT_EQ(e.what(), c.error);
            }
        }
    }
}

TEST(Plugin, RefusesWhatIsNotALibrary) {
    const auto text = std::filesystem::temp_directory_path() / "icphost_not_a_library.txt";
    std::ofstream(text) << "not a library\n";
    EXPECT_THROW(icphost::Plugin{text}, icphost::LoadError);
    EXPECT_THROW(icphost::Plugin{text.string() + ".missing"}, icphost::LoadError);
    std::filesystem::remove(text);
}

#if !defined(_WIN32)
// Every cut of a real library is refused with an error, never read beyond
// its end.
TEST(Plugin, ExportTableOfACutLibraryIsAnError) {
    std::ifstream in(icphost::default_plugin_path(), std::ios::binary);
    const std::string whole{std::istreambuf_iterator<char>(in), {}};
    ASSERT_GT(whole.size(), 4096u);
    const auto cut = std::filesystem::temp_directory_path() / "icphost_cut_library.so";
    for (std::size_t size : {std::size_t(0), std::size_t(4), std::size_t(63), std::size_t(64),
                             std::size_t(4096), whole.size() / 2, whole.size() - 1}) {
        SCOPED_TRACE(size);
        std::ofstream(cut, std::ios::binary | std::ios::trunc) << whole.substr(0, size);
        EXPECT_THROW(icphost::elf_exported_functions(cut), icphost::LoadError);
    }
    std::filesystem::remove(cut);
}
#endif

TEST(Listing, EightBitTextBecomesUtf8) {
    struct Case {
        std::string in, out;
    };
    const Case cases[] = {
        {"25 \xC2\xB0""C", "25 \xC2\xB0""C"},                    // already UTF-8
        {"\xF0\x9F\x98\x80", "\xF0\x9F\x98\x80"},                // 4 bytes
        {"\xE2\x82", "\xC3\xA2\xC2\x82"},                        // cut short
        {"\xC0\xAF", "\xC3\x80\xC2\xAF"},                        // overlong
        {"\xED\xA0\x80", "\xC3\xAD\xC2\xA0\xC2\x80"},            // surrogate
        {"\xF4\x90\x80\x80", "\xC3\xB4\xC2\x90\xC2\x80\xC2\x80"} // beyond U+10FFFF
    };
    for (const auto& c : cases) EXPECT_EQ(icphost::to_utf8(c.in), c.out) << c.in;
}

// One record a line, texts in UTF-8.
TEST(Listing, JsonHasOneRecordPerFunctionInOrder) {
    const icphost::ScriptFunction functions[] = {
        {.export_name = "plugin_icp_loaded", .name = "ICP_Loaded", .record = {"Is ICP plugin loaded", "Boolean"}},
        {.export_name = "a_b", .name = "A b", .record = {"Say \"stop\"\nat 25 \xB0""C"}}};
    std::ostringstream out;
    icphost::print_functions_json(out, std::vector<const icphost::ScriptFunction*>{&functions[0], &functions[1]});
    EXPECT_EQ(out.str(), "[\n{\"export\":\"plugin_icp_loaded\",\"name\":\"ICP_Loaded\",\"help\":[\"Is ICP plugin loaded\",\"Boolean\"]},\n"
                         "{\"export\":\"a_b\",\"name\":\"A b\",\"help\":[\"Say \\\"stop\\\"\\nat 25 \xC2\xB0""C\"]}\n]\n");
}

}  // namespace
