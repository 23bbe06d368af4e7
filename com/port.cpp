#include "com/port.h"

#include <cstdint>
#include <string>

#include "com/body.h"
#include "plugin/catalogue.h"

#define ICP_COM_PORT_FUNCTIONS(F)                                                                  \
    F(icpcom_opendevice, "ICPCOM_OpenDevice",                                                      \
      "Opens the COM device and specifies the baud rate, parity bits, data bits, and stop bits",   \
      "Device handle",                                                                             \
      "String, COM port, baud rate, parity bits, data bits, and stop bits. The default setting is " \
      "'COM1,115200,N,8,1'")                                                                       \
    F(icpcom_closedevice, "ICPCOM_CloseDevice", "Closes the COM device", "Boolean", "Device handle") \
    F(icpcom_last_error, "ICPCOM_LastError", "Get ICP COM device last error", "String or integer", \
      "Sting function return type. 's' for string or 'i' for integer")

using namespace icp;

// The text goes to the SDK whole: the plug-in neither parses it nor fills in
// defaults.
ICP_EXPORT nvValue icpcom_opendevice(const nvValue& configuration) {
    pac_SetLastError(0);
    if (!configuration.isString()) return com::refused();
    PAC_HANDLE port = uart_Open(configuration.toString().c_str());
    if (com::invalid_port(port)) return make::null();
    return make::handle(port);
}

// The script's handle stays as it is; a later call with it fails in the SDK.
ICP_EXPORT nvValue icpcom_closedevice(const nvValue& handle) {
    return com::body(handle, [](PAC_HANDLE port) { return com::status(uart_Close(port)); });
}

// Leaves the SDK's last error alone: that is what is being asked for.
ICP_EXPORT nvValue icpcom_last_error(const nvValue& form) {
    if (!form.isString()) return make::null();
    if (form.toString() == "i") return make::integer(static_cast<std::int32_t>(pac_GetLastError()));
    if (form.toString() != "s") return make::null();
    const PAC_DWORD code = pac_GetLastError();
    // The SDK's message buffer cannot hold this text; it is not asked for 0.
    if (code == 0) return make::text("The operation completed successfully");
    char message[32];
    pac_GetErrorMessage(code, message);
    return make::text_of(message, sizeof message);
}

ICP_CATALOGUE_GROUP(com_port, ICP_COM_PORT_FUNCTIONS)
