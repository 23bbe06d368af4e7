/* C interface of the USB I/O SDK: device scan and list, instances, open and
 * close, device information and settings, and the DO, DI, AI, AO and PI
 * group functions.
 *
 * Every function that takes a device instance takes it first and returns a
 * 32-bit result code, USBIO_OK (0) on success. Output buffers have fixed
 * sizes that no function ever writes beyond:
 *   - per-channel arrays: 16 entries, whatever the group's channel total
 *     (a function fills the entries of the module's channels only);
 *   - supported type codes (and AO_GetTotalSupportType): 64 bytes;
 *   - DO power-on enables: 32 bytes;
 *   - nickname and serial number: 32 bytes (31 characters and a zero);
 *   - 16-channel masks: 2 bytes, little-endian (byte 0 holds channels 0-7);
 *   - ListDevice: 128 entries in each array.
 * A null instance gives USBIO_ERR_HANDLE_INVALID; so does a pointer that
 * CreateInstance never returned or that was already disposed (it is never
 * dereferenced). A null buffer gives USBIO_ERR_PARAMETER.
 */
#ifndef ICPDAS_USBIO_H
#define ICPDAS_USBIO_H

#include <stdint.h>

#if defined(ICPDAS_USBIO_STATIC)
#  define USBIO_API
#elif defined(_WIN32)
#  if defined(ICPDAS_USBIO_BUILD)
#    define USBIO_API __declspec(dllexport)
#  else
#    define USBIO_API __declspec(dllimport)
#  endif
#else
#  define USBIO_API __attribute__((visibility("default")))
#endif

#ifdef __cplusplus
extern "C" {
#endif

typedef struct usbio_instance* USBIO_HANDLE;

/* Result codes. */
#define USBIO_OK                    0x00000
#define USBIO_ERR_HANDLE_INVALID    0x10000 /* null or unknown instance */
#define USBIO_ERR_DEVICE_BUSY       0x10001 /* held open by another instance */
#define USBIO_ERR_DEVICE_NOT_FOUND  0x10002 /* no attached module matches */
#define USBIO_ERR_SCAN              0x10003
#define USBIO_ERR_PACKET_SIZE       0x10004
#define USBIO_ERR_WRITE_PACKET      0x10005
#define USBIO_ERR_TIMEOUT           0x10100 /* the module does not answer */
#define USBIO_ERR_ALREADY_OPEN      0x10101 /* this instance already has a module open */
#define USBIO_ERR_NOT_OPEN          0x10102 /* instance not open, or closed */
#define USBIO_ERR_BAD_DATA          0x10103
#define USBIO_ERR_NOT_SUPPORTED     0x10104 /* the module has no such group */
#define USBIO_ERR_PARAMETER         0x10105 /* parameter out of range */
#define USBIO_ERR_BULK_VALUE        0x10106
#define USBIO_ERR_DEVICE_INFO       0x10107

#define USBIO_MAX_DEVICES           128
#define USBIO_MAX_CHANNELS          16
#define USBIO_TEXT_SIZE             32
#define USBIO_TYPE_LIST_SIZE        64
#define USBIO_DO_POWER_ON_SIZE      32

/* Support I/O mask bits (GetSupportIOMask). */
#define USBIO_GROUP_DI 0x01
#define USBIO_GROUP_DO 0x02
#define USBIO_GROUP_AI 0x04
#define USBIO_GROUP_AO 0x08
#define USBIO_GROUP_PI 0x10
#define USBIO_GROUP_PO 0x20

/* Devices and instances. */
USBIO_API int32_t ScanDevice(void); /* returns the number of modules found */
USBIO_API int32_t ListDevice(uint16_t typeCodes[128], uint8_t boardIds[128]); /* returns the count */
USBIO_API USBIO_HANDLE CreateInstance(void);
USBIO_API void DisposeInstance(USBIO_HANDLE h);
USBIO_API int32_t OpenDevice(USBIO_HANDLE h, uint16_t typeCode, uint8_t boardId);
USBIO_API int32_t CloseDevice(USBIO_HANDLE h);

/* Device information and settings. */
USBIO_API int32_t SYNCDevice(USBIO_HANDLE h);
USBIO_API int32_t SetCommTimeout(USBIO_HANDLE h, uint32_t timeoutMs);
USBIO_API int32_t GetCommTimeout(USBIO_HANDLE h, uint32_t* timeoutMs);
USBIO_API int32_t SetAutoResetWDT(USBIO_HANDLE h, int32_t enable);
USBIO_API int32_t RefreshDeviceInfo(USBIO_HANDLE h);
USBIO_API int32_t SetSoftWDTTimeout(USBIO_HANDLE h, uint32_t timeoutMs);
USBIO_API int32_t GetSoftWDTTimeout(USBIO_HANDLE h, uint32_t* timeoutMs);
USBIO_API int32_t GetDeviceID(USBIO_HANDLE h, uint32_t* deviceId);
USBIO_API int32_t GetFwVer(USBIO_HANDLE h, uint16_t* version);
USBIO_API int32_t GetDeviceNickName(USBIO_HANDLE h, char nickname[32]);
USBIO_API int32_t SetDeviceNickName(USBIO_HANDLE h, const char nickname[32]);
USBIO_API int32_t GetDeviceSN(USBIO_HANDLE h, char serial[32]);
USBIO_API int32_t GetSupportIOMask(USBIO_HANDLE h, uint8_t* mask);
USBIO_API int32_t GetDITotal(USBIO_HANDLE h, uint8_t* total);
USBIO_API int32_t GetDOTotal(USBIO_HANDLE h, uint8_t* total);
USBIO_API int32_t GetAITotal(USBIO_HANDLE h, uint8_t* total);
USBIO_API int32_t GetAOTotal(USBIO_HANDLE h, uint8_t* total);
USBIO_API int32_t GetPITotal(USBIO_HANDLE h, uint8_t* total);
USBIO_API int32_t GetPOTotal(USBIO_HANDLE h, uint8_t* total);
USBIO_API int32_t SetUserDefinedBoardID(USBIO_HANDLE h, uint8_t boardId);
USBIO_API int32_t LoadDefault(USBIO_HANDLE h);

/* Digital output. */
USBIO_API int32_t DO_SetPowerOnEnable(USBIO_HANDLE h, uint8_t channel, uint8_t enable);
USBIO_API int32_t DO_GetPowerOnEnable(USBIO_HANDLE h, uint8_t enables[32]);
USBIO_API int32_t DO_SetSafetyEnable(USBIO_HANDLE h, const uint32_t* mask);
USBIO_API int32_t DO_GetSafetyEnable(USBIO_HANDLE h, uint32_t* mask);
USBIO_API int32_t DO_SetSafetyValue(USBIO_HANDLE h, const uint32_t* value);
USBIO_API int32_t DO_GetSafetyValue(USBIO_HANDLE h, uint32_t* value);
USBIO_API int32_t DO_SetDigitalOutputInverse(USBIO_HANDLE h, uint32_t inverse);
USBIO_API int32_t DO_GetDigitalOutputInverse(USBIO_HANDLE h, uint32_t* inverse);
USBIO_API int32_t DO_WriteValue(USBIO_HANDLE h, const uint32_t* value);
USBIO_API int32_t DO_WriteChannelValue(USBIO_HANDLE h, uint8_t channel, uint8_t value);
USBIO_API int32_t DO_ReadValue(USBIO_HANDLE h, uint32_t* value);

/* Digital input. */
USBIO_API int32_t DI_SetDigitalFilterWidth(USBIO_HANDLE h, uint16_t width);
USBIO_API int32_t DI_GetDigitalFilterWidth(USBIO_HANDLE h, uint16_t* width);
USBIO_API int32_t DI_SetDigitalValueInverse(USBIO_HANDLE h, uint32_t inverse);
USBIO_API int32_t DI_GetDigitalValueInverse(USBIO_HANDLE h, uint32_t* inverse);
USBIO_API int32_t DI_SetCntEdgeTrigger(USBIO_HANDLE h, uint32_t edges);
USBIO_API int32_t DI_GetCntEdgeTrigger(USBIO_HANDLE h, uint32_t* edges);
USBIO_API int32_t DI_WriteClearCounter(USBIO_HANDLE h, uint8_t channel);
USBIO_API int32_t DI_WriteClearCounters(USBIO_HANDLE h, uint32_t mask);
USBIO_API int32_t DI_ReadValue(USBIO_HANDLE h, uint32_t* value);
/* Writes one word only: the counter of channel 0. */
USBIO_API int32_t DI_ReadCounterValue(USBIO_HANDLE h, uint32_t* counter);

/* Analog input. */
USBIO_API int32_t AI_SetTypeCode(USBIO_HANDLE h, uint8_t channel, uint8_t typeCode);
USBIO_API int32_t AI_SetTypeCodes(USBIO_HANDLE h, const uint8_t typeCodes[16]);
USBIO_API int32_t AI_GetTypeCode(USBIO_HANDLE h, uint8_t typeCodes[16]);
USBIO_API int32_t AI_SetChCJCOffset(USBIO_HANDLE h, uint8_t channel, float offset);
USBIO_API int32_t AI_SetChCJCOffsets(USBIO_HANDLE h, const float offsets[16]);
USBIO_API int32_t AI_GetChCJCOffset(USBIO_HANDLE h, float offsets[16]);
USBIO_API int32_t AI_SetChEnable(USBIO_HANDLE h, const uint16_t* mask);
USBIO_API int32_t AI_GetChEnable(USBIO_HANDLE h, uint16_t* mask);
USBIO_API int32_t AI_SetFilterRejection(USBIO_HANDLE h, uint8_t rejection);
USBIO_API int32_t AI_GetFilterRejection(USBIO_HANDLE h, uint8_t* rejection);
USBIO_API int32_t AI_SetCJCOffset(USBIO_HANDLE h, float offset);
USBIO_API int32_t AI_GetCJCOffset(USBIO_HANDLE h, float* offset);
USBIO_API int32_t AI_SetCJCEnable(USBIO_HANDLE h, uint8_t enable);
USBIO_API int32_t AI_GetCJCEnable(USBIO_HANDLE h, uint8_t* enable);
USBIO_API int32_t AI_SetWireDetectEnable(USBIO_HANDLE h, uint8_t enable);
USBIO_API int32_t AI_GetWireDetectEnable(USBIO_HANDLE h, uint8_t* enable);
USBIO_API int32_t AI_GetTotalSupportType(USBIO_HANDLE h, uint8_t* count);
USBIO_API int32_t AI_GetSupportTypeCode(USBIO_HANDLE h, uint8_t typeCodes[64]);
USBIO_API int32_t AI_GetResolution(USBIO_HANDLE h, uint8_t bits[16]);
USBIO_API int32_t AI_ReadCJCValue(USBIO_HANDLE h, float* celsius);
USBIO_API int32_t AI_SetChSampleRate(USBIO_HANDLE h, const uint32_t rates[16]);
USBIO_API int32_t AI_GetChSampleRate(USBIO_HANDLE h, uint32_t rates[16]);
USBIO_API int32_t AI_ReadValueDigital(USBIO_HANDLE h, uint32_t values[16]);
USBIO_API int32_t AI_ReadValueAnalog(USBIO_HANDLE h, float values[16]);
USBIO_API int32_t AI_ReadValueDigitalWithChSta(USBIO_HANDLE h, uint32_t values[16], uint8_t status[16]);
USBIO_API int32_t AI_ReadValueAnalogWithChSta(USBIO_HANDLE h, float values[16], uint8_t status[16]);

/* Analog output. */
USBIO_API int32_t AO_SetTypeCode(USBIO_HANDLE h, uint8_t channel, uint8_t typeCode);
USBIO_API int32_t AO_SetTypeCodes(USBIO_HANDLE h, const uint8_t typeCodes[16]);
USBIO_API int32_t AO_GetTypeCode(USBIO_HANDLE h, uint8_t typeCodes[16]);
USBIO_API int32_t AO_SetChEnable(USBIO_HANDLE h, const uint8_t mask[2]);
USBIO_API int32_t AO_GetChEnable(USBIO_HANDLE h, uint8_t mask[2]);
USBIO_API int32_t AO_WriteChannelValueDigital(USBIO_HANDLE h, uint8_t channel, uint32_t value);
USBIO_API int32_t AO_WriteValueDigital(USBIO_HANDLE h, const uint32_t values[16]);
USBIO_API int32_t AO_WriteChannelValueAnalog(USBIO_HANDLE h, uint8_t channel, float value);
USBIO_API int32_t AO_WriteValueAnalog(USBIO_HANDLE h, const float values[16]);
USBIO_API int32_t AO_SetPowerOnEnable(USBIO_HANDLE h, const uint8_t enables[16]);
USBIO_API int32_t AO_GetPowerOnEnable(USBIO_HANDLE h, uint8_t enables[16]);
USBIO_API int32_t AO_SetPowerOnValueDigital(USBIO_HANDLE h, const uint32_t values[16]);
USBIO_API int32_t AO_SetPowerOnChannelValueDigital(USBIO_HANDLE h, uint8_t channel, uint32_t value);
USBIO_API int32_t AO_SetPowerOnValueAnalog(USBIO_HANDLE h, const float values[16]);
USBIO_API int32_t AO_SetPowerOnChannelValueAnalog(USBIO_HANDLE h, uint8_t channel, float value);
USBIO_API int32_t AO_GetPowerOnValueDigital(USBIO_HANDLE h, uint32_t values[16]);
USBIO_API int32_t AO_GetPowerOnValueAnalog(USBIO_HANDLE h, float values[16]);
USBIO_API int32_t AO_SetSafetyEnable(USBIO_HANDLE h, const uint8_t mask[2]);
USBIO_API int32_t AO_GetSafetyEnable(USBIO_HANDLE h, uint8_t mask[2]);
USBIO_API int32_t AO_SetSafetyValueDigital(USBIO_HANDLE h, const uint32_t values[16]);
USBIO_API int32_t AO_SetSafetyChannelValueDigital(USBIO_HANDLE h, uint8_t channel, uint32_t value);
USBIO_API int32_t AO_SetSafetyValueAnalog(USBIO_HANDLE h, const float values[16]);
USBIO_API int32_t AO_SetSafetyChannelValueAnalog(USBIO_HANDLE h, uint8_t channel, float value);
USBIO_API int32_t AO_GetSafetyValueDigital(USBIO_HANDLE h, uint32_t values[16]);
USBIO_API int32_t AO_GetSafetyValueAnalog(USBIO_HANDLE h, float values[16]);
/* Per channel, the number of type codes that channel supports. */
USBIO_API int32_t AO_GetTotalSupportType(USBIO_HANDLE h, uint8_t counts[64]);
USBIO_API int32_t AO_GetSupportTypeCode(USBIO_HANDLE h, uint8_t typeCodes[64]);
USBIO_API int32_t AO_GetResolution(USBIO_HANDLE h, uint8_t bits[16]);
USBIO_API int32_t AO_ReadExpValueDigital(USBIO_HANDLE h, uint32_t values[16]);
USBIO_API int32_t AO_ReadExpValueAnalog(USBIO_HANDLE h, float values[16]);
USBIO_API int32_t AO_ReadCurValueDigital(USBIO_HANDLE h, uint32_t values[16]);
USBIO_API int32_t AO_ReadCurValueAnalog(USBIO_HANDLE h, float values[16]);

/* Pulse input. */
USBIO_API int32_t PI_SetTypeCode(USBIO_HANDLE h, uint8_t channel, uint8_t typeCode);
USBIO_API int32_t PI_SetTypeCodes(USBIO_HANDLE h, const uint8_t typeCodes[16]);
USBIO_API int32_t PI_GetTypeCode(USBIO_HANDLE h, uint8_t typeCodes[16]);
USBIO_API int32_t PI_SetTriggerMode(USBIO_HANDLE h, uint8_t channel, uint8_t mode);
USBIO_API int32_t PI_SetTriggerModes(USBIO_HANDLE h, const uint8_t modes[16]);
USBIO_API int32_t PI_GetTriggerMode(USBIO_HANDLE h, uint8_t modes[16]);
USBIO_API int32_t PI_SetChIsolatedFlag(USBIO_HANDLE h, uint8_t channel, uint8_t isolated);
USBIO_API int32_t PI_SetChIsolatedFlags(USBIO_HANDLE h, const uint8_t mask[2]);
USBIO_API int32_t PI_GetChIsolatedFlag(USBIO_HANDLE h, uint8_t mask[2]);
USBIO_API int32_t PI_SetLPFilterEnable(USBIO_HANDLE h, uint8_t channel, uint8_t enable);
USBIO_API int32_t PI_SetLPFilterEnables(USBIO_HANDLE h, const uint8_t mask[2]);
USBIO_API int32_t PI_GetLPFilterEnable(USBIO_HANDLE h, uint8_t mask[2]);
USBIO_API int32_t PI_SetLPFilterWidth(USBIO_HANDLE h, uint8_t channel, uint16_t widthUs);
USBIO_API int32_t PI_SetLPFilterWidths(USBIO_HANDLE h, const uint16_t widthsUs[16]);
USBIO_API int32_t PI_GetLPFilterWidth(USBIO_HANDLE h, uint16_t widthsUs[16]);
USBIO_API int32_t PI_ClearSingleChCount(USBIO_HANDLE h, uint8_t channel);
USBIO_API int32_t PI_ClearChCount(USBIO_HANDLE h, const uint8_t mask[2]);
USBIO_API int32_t PI_ClearSingleChStatus(USBIO_HANDLE h, uint8_t channel);
USBIO_API int32_t PI_ClearChStatus(USBIO_HANDLE h, const uint8_t mask[2]);
USBIO_API int32_t PI_GetTotalSupportType(USBIO_HANDLE h, uint8_t* count);
USBIO_API int32_t PI_GetSupportTypeCode(USBIO_HANDLE h, uint8_t typeCodes[64]);
USBIO_API int32_t PI_ReadValue(USBIO_HANDLE h, uint32_t values[16], uint8_t status[16]);
USBIO_API int32_t PI_ReadCntValue(USBIO_HANDLE h, uint32_t counts[16], uint8_t status[16]);
USBIO_API int32_t PI_ReadFreqValue(USBIO_HANDLE h, float frequencies[16], uint8_t status[16]);

#ifdef __cplusplus
}
#endif

#endif /* ICPDAS_USBIO_H */
