#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "icphost/listing.h"
#include "icphost/plugin.h"
#include "pacsdk_sim.h"
#include "usbio_sim.h"

namespace {

std::filesystem::path sim_library() { return icphost::executable_directory() / SIM_LIBRARY; }

std::vector<std::string> sorted(const std::vector<std::string_view>& names) {
    std::vector<std::string> out(names.begin(), names.end());
    std::sort(out.begin(), out.end());
    return out;
}

// Put in place of the plug-in, the host finds the same functions with the
// same help records.
TEST(SimulatedLibrary, OffersWhatThePluginOffers) {
    icphost::Plugin plugin(icphost::default_plugin_path());
    icphost::Plugin sim(sim_library());
    EXPECT_EQ(sorted(sim.exports()), sorted(plugin.exports()));
    EXPECT_EQ(sim.exports().size(), 560u);
    plugin.describe_all();
    sim.describe_all();
    EXPECT_TRUE(sim.problems().empty());
    ASSERT_EQ(sim.functions().size(), plugin.functions().size());
    for (std::size_t i = 0; i < plugin.functions().size(); ++i) {
        const auto& theirs = plugin.functions()[i];
        const auto* ours = icphost::find_function(sim.functions(), theirs.name);
        ASSERT_NE(ours, nullptr) << theirs.name;
        EXPECT_EQ(ours->export_name, theirs.export_name);
        EXPECT_EQ(ours->help(), theirs.help()) << theirs.name;
    }
}

// The plug-in calls the SDK libraries this program calls; the simulated
// library carries its own and imports neither.
TEST(SimulatedLibrary, CarriesItsOwnSdks) {
    ASSERT_TRUE(usbsim::has_function("OpenDevice") && pacsim::has_function("uart_Open"));  // linked here
    const icphost::Plugin plugin(icphost::default_plugin_path());
    const icphost::Plugin sim(sim_library());
    EXPECT_TRUE(plugin.shares("ICPDAS_USBIO", "OpenDevice"));
    EXPECT_TRUE(plugin.shares("PACSDK", "uart_Open"));
    EXPECT_FALSE(sim.shares("ICPDAS_USBIO", "OpenDevice"));
    EXPECT_FALSE(sim.shares("PACSDK", "uart_Open"));
}

}  // namespace
