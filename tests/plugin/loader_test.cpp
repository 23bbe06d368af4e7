// The built plug-in as the host meets it: opened by the operating system's
// loader, its export table read, its frame's entry points called through the
// table.
#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "icphost/plugin.h"
#include "plugin/catalogue.h"
#include "plugin/values/values.h"

namespace {

using NuvarelMath::ValueTypes::nvValue;

icphost::Plugin& plugin() {
    static icphost::Plugin loaded(ICP_PLUGIN_FILE);
    return loaded;
}

template <class Signature>
Signature* entry(const std::string& name) {
    return reinterpret_cast<Signature*>(plugin().symbol(name));
}

// Exactly the catalogue's triples and the two frame entry points, each once
// and undecorated: no C++ mangling, no stdcall suffix, nothing of the
// runtime or of the libraries linked in.
TEST(Loader, ExportTableHoldsTheCatalogueAndNothingElse) {
    std::multiset<std::string> expected = {"definePluginTypes", "math"};
    for (const icp::Function* f : icp::catalogue()) {
        const std::string x = f->export_name;
        expected.insert({x, x + "Name", x + "Description"});
    }
    const auto& exports = plugin().exports();
    const std::multiset<std::string> actual(exports.begin(), exports.end());
    EXPECT_EQ(actual, expected);
}

// The type hook changes nothing: the math object stays the one help records
// are built on, the USB error stays. "ICP_Loaded" is true and leaves the
// USB error alone too, where every USB body clears it on entry.
TEST(Loader, FrameEntryPointsThroughTheExportTable) {
    auto* math = entry<NuvarelMath::nvMath*()>("math");
    auto* define_types = entry<void()>("definePluginTypes");
    auto* loaded = entry<nvValue()>("plugin_icp_loaded");
    auto* close = entry<nvValue(const nvValue&)>("icpusb_closedevice");
    auto* last_error = entry<nvValue(const nvValue&)>("icpusb_last_error");
    ASSERT_TRUE(math && define_types && loaded && close && last_error);
    NuvarelMath::nvMath* object = math();
    close(nvValue());  // no handle: error -1
    define_types();
    EXPECT_EQ(math(), object);
    EXPECT_EQ(object->precision(), 3u);
    EXPECT_EQ(static_cast<int>(object->angleUnit()), 1);
    EXPECT_EQ(loaded().repr(), "true");
    EXPECT_EQ(last_error(icp::make::text("i")).repr(), "-1");
}

}  // namespace
