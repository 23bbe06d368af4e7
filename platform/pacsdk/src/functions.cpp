// The SDK's functions by name: those a fault can be armed for.
#include "library.h"

namespace pacsdk {

namespace {
constexpr std::string_view names[] = {
    "pac_GetErrorMessage", "pac_GetLastError",
    "pac_GetModuleWDTConfig", "pac_GetModuleWDTStatus",
    "pac_GetPWMDIOStatus", "pac_GetPWMDITriggerConfig",
    "pac_GetPWMDuty", "pac_GetPWMFrequency",
    "pac_GetPWMMode", "pac_GetPWMPulseCount",
    "pac_ReadAI", "pac_ReadAO",
    "pac_ReadDI_MF", "pac_ReadDO_MF",
    "pac_ReadModulePowerOnValueAO_MF", "pac_ReadModulePowerOnValueDO_MF",
    "pac_ReadModuleSafeValueAO_MF", "pac_ReadModuleSafeValueDO_MF",
    "pac_RefreshModuleWDT", "pac_ResetModuleWDT",
    "pac_SavePWMConfig", "pac_SetLastError",
    "pac_SetModuleWDTConfig", "pac_SetPWMDITriggerConfig",
    "pac_SetPWMDuty", "pac_SetPWMFrequency",
    "pac_SetPWMMode", "pac_SetPWMPulseCount",
    "pac_SetPWMStart", "pac_SetPWMSynChannel",
    "pac_SyncPWMStart", "pac_WriteAO",
    "pac_WriteDO_MF", "pac_WriteModulePowerOnValueAO_MF",
    "pac_WriteModulePowerOnValueDO_MF", "pac_WriteModuleSafeValueAO_MF",
    "pac_WriteModuleSafeValueDO_MF", "uart_Close",
    "uart_EnableCheckSum", "uart_Open",
    "uart_SendCmd", "uart_SetTimeOut",
};
}  // namespace

std::span<const std::string_view> sdk_functions() { return names; }

}  // namespace pacsdk
