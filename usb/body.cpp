#include "usb/body.h"

namespace icp::usb {

bool read_total(USBIO_HANDLE device, Group group, std::uint8_t& total) {
    std::int32_t code = 0;
    switch (group) {
        case Group::DO: code = GetDOTotal(device, &total); break;
        case Group::DI: code = GetDITotal(device, &total); break;
        case Group::AI: code = GetAITotal(device, &total); break;
        case Group::AO: code = GetAOTotal(device, &total); break;
        case Group::PI: code = GetPITotal(device, &total); break;
    }
    return code == 0;
}

}  // namespace icp::usb
