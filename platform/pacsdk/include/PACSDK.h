/* PAC SDK: COM ports, DCON command exchange, the last error, and the module
 * calls for remote I/O modules reached over a COM port.
 *
 * Types. The library uses its own names so that this header agrees with
 * <windows.h> whichever is included first:
 *   PAC_HANDLE  an opaque port handle (pointer-sized, never dereferenced)
 *   PAC_BOOL    32-bit status, non-zero = success
 *   PAC_DWORD   unsigned 32-bit, on every platform (note: the Win32 DWORD is
 *               unsigned long; pass uint32_t or PAC_DWORD variables to the
 *               pointer parameters below, not DWORD ones)
 *
 * Status calls return non-zero on success and zero on failure; the cause is
 * then read with pac_GetLastError(). The last error belongs to the calling
 * thread, and a successful call does not clear it.
 *
 * Slots. A module on a COM port is addressed by slot PAC_REMOTE_IO(address)
 * = 0x1000 + address (0..255). Any slot without bit 12, or with bits above
 * 0x10FF, fails with PAC_ERR_INVALID_SLOT_NUMBER and sends nothing.
 */
#ifndef PACSDK_H
#define PACSDK_H

#include <stdint.h>

#include "PACSDK_errors.h"

#if defined(PACSDK_STATIC)
#  define PACSDK_API
#elif defined(_WIN32)
#  if defined(PACSDK_BUILD)
#    define PACSDK_API __declspec(dllexport)
#  else
#    define PACSDK_API __declspec(dllimport)
#  endif
#else
#  define PACSDK_API __attribute__((visibility("default")))
#endif

typedef void* PAC_HANDLE;
typedef int32_t PAC_BOOL;
typedef uint32_t PAC_DWORD;

/* uart_Open's failure value: all bits set, never NULL. */
#define PAC_INVALID_HANDLE ((PAC_HANDLE)(intptr_t)-1)

#define PAC_REMOTE_IO(address) (0x1000 + (address))

/* Which timeout uart_SetTimeOut sets. */
#define CTO_TIMEOUT_ALL 0         /* every one of them */
#define CTO_READ_RETRY_TIMEOUT 1  /* gap between two received characters; 0 = off */
#define CTO_READ_TOTAL_TIMEOUT 2  /* whole reply; 300 ms when a port opens */
#define CTO_WRITE_TOTAL_TIMEOUT 3 /* whole command */

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Ports and raw commands ------------------------------------------- */

/* "COMn,baud,parity,databits,stopbits", e.g. "COM1,115200,N,8,1"; "COMn"
 * alone or any leading part of the five fields, the rest defaulting to
 * 115200,N,8,1. Parity N, O, E, M or S; data bits 5 to 8; stop bits 1 or 2.
 * A malformed string: PAC_ERR_INVALID_COMPORT_NUMBER. A port that is not
 * there, is already open, or refuses the baud rate: PAC_ERR_UART_OPEN_FAILED.
 * Either way PAC_INVALID_HANDLE. */
PACSDK_API PAC_HANDLE uart_Open(const char* connection);
PACSDK_API PAC_BOOL uart_Close(PAC_HANDLE port);
/* Sends cmd with CR (and the checksum, when on), waits for one reply line and
 * copies it without CR (and checksum) into result: at most 19 characters and
 * a zero, so result needs 20 bytes; a longer reply is cut. The reply is not
 * judged: "?01" is a success. No reply: PAC_ERR_UART_READ_TIMEOUT. */
PACSDK_API PAC_BOOL uart_SendCmd(PAC_HANDLE port, const char* cmd, char* result);
/* Checksum mode of the port, off when it opens. */
PACSDK_API void uart_EnableCheckSum(PAC_HANDLE port, PAC_BOOL enable);
PACSDK_API void uart_SetTimeOut(PAC_HANDLE port, PAC_DWORD msec, int cto_type);

/* ---- Last error -------------------------------------------------------- */

PACSDK_API void pac_SetLastError(PAC_DWORD code);
PACSDK_API PAC_DWORD pac_GetLastError(void);
/* Writes the code's text, never more than 32 bytes with the zero. */
PACSDK_API void pac_GetErrorMessage(PAC_DWORD code, char* message);

/* ---- Analog and digital I/O ------------------------------------------- */
/* Channels count from 0; a channel outside 0..total-1 fails with
 * PAC_ERR_IO_CHANNEL_OUT_OF_RANGE before anything is sent. Digital words:
 * bit n = channel n; bits at and above total are ignored on writes and zero
 * on reads. */

PACSDK_API PAC_BOOL pac_ReadAI(PAC_HANDLE port, int slot, int channel, int total, float* value);
PACSDK_API PAC_BOOL pac_ReadAO(PAC_HANDLE port, int slot, int channel, int total, float* value);
PACSDK_API PAC_BOOL pac_WriteAO(PAC_HANDLE port, int slot, int channel, int total, float value);
PACSDK_API PAC_BOOL pac_ReadDI_MF(PAC_HANDLE port, int slot, int total, PAC_DWORD* value);
PACSDK_API PAC_BOOL pac_ReadDO_MF(PAC_HANDLE port, int slot, int total, PAC_DWORD* value);
PACSDK_API PAC_BOOL pac_WriteDO_MF(PAC_HANDLE port, int slot, int total, PAC_DWORD value);

/* ---- Power-on and safe values ----------------------------------------- */
/* The writers briefly drive the outputs to the new value to latch it, then
 * restore them (the DCON command set latches the present output). */

PACSDK_API PAC_BOOL pac_ReadModulePowerOnValueDO_MF(PAC_HANDLE port, int slot, int total, uint32_t* value);
PACSDK_API PAC_BOOL pac_WriteModulePowerOnValueDO_MF(PAC_HANDLE port, int slot, int total, uint32_t value);
PACSDK_API PAC_BOOL pac_ReadModuleSafeValueDO_MF(PAC_HANDLE port, int slot, int total, uint32_t* value);
PACSDK_API PAC_BOOL pac_WriteModuleSafeValueDO_MF(PAC_HANDLE port, int slot, int total, uint32_t value);
PACSDK_API PAC_BOOL pac_ReadModulePowerOnValueAO_MF(PAC_HANDLE port, int slot, int channel, int total, float* value);
PACSDK_API PAC_BOOL pac_WriteModulePowerOnValueAO_MF(PAC_HANDLE port, int slot, int channel, int total, float value);
PACSDK_API PAC_BOOL pac_ReadModuleSafeValueAO_MF(PAC_HANDLE port, int slot, int channel, int total, float* value);
PACSDK_API PAC_BOOL pac_WriteModuleSafeValueAO_MF(PAC_HANDLE port, int slot, int channel, int total, float value);

/* ---- Host watchdog ----------------------------------------------------- */
/* Timeouts are in 0.1 s units, 1 to 255. */

/* Non-zero when the module's watchdog timeout flag is set; zero when it is
 * clear or the call failed (the last error tells which). */
PACSDK_API PAC_BOOL pac_GetModuleWDTStatus(PAC_HANDLE port, int slot);
/* overwrite is read back as 0. */
PACSDK_API PAC_BOOL pac_GetModuleWDTConfig(PAC_HANDLE port, int slot, short* enabled, uint32_t* timeout,
                                           int* overwrite);
/* enabled: non-zero enables; overwrite is ignored. */
PACSDK_API PAC_BOOL pac_SetModuleWDTConfig(PAC_HANDLE port, int slot, short enabled, uint32_t timeout,
                                           int overwrite);
/* Clears the timeout flag so that outputs take commands again. */
PACSDK_API PAC_BOOL pac_ResetModuleWDT(PAC_HANDLE port, int slot);
/* "Host OK" broadcast: refreshes every module on the port, waits for no reply. */
PACSDK_API PAC_BOOL pac_RefreshModuleWDT(PAC_HANDLE port, int slot);

/* ---- PWM (8 channels, 0..7) -------------------------------------------- */
/* A value that does not fit its DCON field (duty 0.0..99.9, frequency up to
 * 999999, pulse count up to 0xFFFF, single-digit modes) fails with
 * PAC_ERR_IO_VALUE_OUT_OF_RANGE before anything is sent; one the module
 * refuses fails with the same code. The module may apply a duty or frequency
 * slightly different from the one asked for; the getters read what applies. */

PACSDK_API PAC_BOOL pac_SetPWMDuty(PAC_HANDLE port, int slot, short channel, float duty);
PACSDK_API PAC_BOOL pac_GetPWMDuty(PAC_HANDLE port, int slot, short channel, float* duty);
PACSDK_API PAC_BOOL pac_SetPWMFrequency(PAC_HANDLE port, int slot, short channel, PAC_DWORD hertz);
PACSDK_API PAC_BOOL pac_GetPWMFrequency(PAC_HANDLE port, int slot, short channel, PAC_DWORD* hertz);
/* 1 continuous, 0 burst of the pulse count. */
PACSDK_API PAC_BOOL pac_SetPWMMode(PAC_HANDLE port, int slot, short channel, PAC_DWORD mode);
PACSDK_API PAC_BOOL pac_GetPWMMode(PAC_HANDLE port, int slot, short channel, PAC_DWORD* mode);
/* 0 none, 1 start on a DI rising edge, 2 stop on it (DI n for channel n). */
PACSDK_API PAC_BOOL pac_SetPWMDITriggerConfig(PAC_HANDLE port, int slot, short channel, short config);
PACSDK_API PAC_BOOL pac_GetPWMDITriggerConfig(PAC_HANDLE port, int slot, short channel, short* config);
/* Bit n = channel n on (1) or off (0); bits 8 and up are ignored. */
PACSDK_API PAC_BOOL pac_SetPWMStart(PAC_HANDLE port, int slot, short mask);
PACSDK_API PAC_BOOL pac_SetPWMSynChannel(PAC_HANDLE port, int slot, short channel, short config);
/* 1 starts, 0 stops every channel marked for synchronisation. */
PACSDK_API PAC_BOOL pac_SyncPWMStart(PAC_HANDLE port, int slot, short config);
PACSDK_API PAC_BOOL pac_SavePWMConfig(PAC_HANDLE port, int slot);
/* Writes 8 bytes to each array (0 or 1 per channel); the rest is untouched. */
PACSDK_API PAC_BOOL pac_GetPWMDIOStatus(PAC_HANDLE port, int slot, unsigned char* pwm_status,
                                        unsigned char* di_status);
/* 1..0xFFFF; a count above 1 turns continuous mode off. */
PACSDK_API PAC_BOOL pac_SetPWMPulseCount(PAC_HANDLE port, int slot, short channel, PAC_DWORD count);
PACSDK_API PAC_BOOL pac_GetPWMPulseCount(PAC_HANDLE port, int slot, short channel, PAC_DWORD* count);

#ifdef __cplusplus
}
#endif

#endif /* PACSDK_H */
