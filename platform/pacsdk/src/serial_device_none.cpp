// On Windows the vendor's own SDK serves real COM ports; the stand-in has
// only the rig's emulated lines.
#include "port.h"

namespace pacsdk {

std::unique_ptr<Port> open_device(const std::string&, const LineSettings&, std::string* why) {
    *why = "Real ports need the vendor SDK";
    return nullptr;
}

}  // namespace pacsdk
