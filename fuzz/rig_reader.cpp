// Bytes as a rig file for one of the two rig readers (FUZZ_USB_RIG picks
// the USB I/O SDK stand-in's, else the PAC SDK stand-in's). A refused text
// must come with a message naming its line; an accepted one must load.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#if defined(FUZZ_USB_RIG)
#include "usbio_sim.h"
namespace sim = usbsim;
#else
#include "pacsdk_sim.h"
namespace sim = pacsim;
#endif

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    std::string error;
    const bool accepted = sim::check_rig(text, &error);
    if (!accepted && error.rfind("line ", 0) != 0) std::abort();
    if (accepted) {
        std::string again;
        if (!sim::load_rig(text, &again)) std::abort();
    }
    return 0;
}
