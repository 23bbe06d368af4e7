// The plug-in's own script function: whether it is loaded.
#include "NvMathLib.h"
#include "plugin/catalogue.h"

#define ICP_FRAME_FUNCTIONS(F) \
    F(plugin_icp_loaded, "ICP_Loaded", "Is ICP plugin loaded", "Boolean")

// Touches no device and leaves usb_last_error as it was.
ICP_EXPORT icp::nvValue plugin_icp_loaded() {
    NuvarelMath::ValueTypes::nvBoolean loaded(true);
    icp::nvValue result(loaded);
    return result;
}

ICP_CATALOGUE_GROUP(frame, ICP_FRAME_FUNCTIONS)
