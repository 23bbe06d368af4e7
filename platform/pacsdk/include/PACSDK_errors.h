/* Error codes of the PAC SDK stand-in and their message texts, in one table.
 *
 * Families by the upper bits: 0x0xxxx success, unknown and pass-through
 * operating-system codes; 0x1xxxx basic; 0x5xxxx UART; 0x6xxxx I/O.
 * Names and values follow the vendor's SDK as far as they are known; the
 * texts are this library's own, each at most 31 characters so that it fits
 * a 32-byte buffer with its terminating zero. A correction to a code or a
 * text is a change to one line here.
 */
#ifndef PACSDK_ERRORS_H
#define PACSDK_ERRORS_H

/* X(name, value, text) */
#define PACSDK_ERROR_TABLE(X)                                                  \
    X(PAC_ERR_SUCCESS,                          0x00000, "No error")           \
    X(PAC_ERR_UNKNOWN,                          0x00001, "Unknown error")      \
    /* Operating-system code for a bad handle: no PAC_ERR_ name covers it. */  \
    X(PAC_OS_ERR_INVALID_HANDLE,                0x00006, "Invalid handle")     \
    X(PAC_ERR_MODULE_UNEXISTS,                  0x10001, "The module does not exist") \
    X(PAC_ERR_INVALID_MAC,                      0x10002, "Invalid MAC address") \
    X(PAC_ERR_INVALID_COMPORT_NUMBER,           0x10003, "Invalid COM port number") \
    X(PAC_ERR_FUNCTION_NOT_SUPPORT,             0x10004, "Function not supported") \
    X(PAC_ERR_VERSION_NOT_SUPPORT,              0x10005, "Version not supported") \
    X(PAC_ERR_INVALID_SLOT_NUMBER,              0x10006, "Invalid slot number") \
    X(PAC_ERR_UART_CHECKSUM,                    0x50001, "Checksum error")     \
    X(PAC_ERR_UART_READ_TIMEOUT,                0x50002, "Module response timeout") \
    X(PAC_ERR_UART_RESPONSE,                    0x50003, "Invalid module response") \
    X(PAC_ERR_UART_UNDER_INPUT_RANGE,           0x50004, "Under input range")  \
    X(PAC_ERR_UART_EXCEED_INPUT_RANGE,          0x50005, "Exceed input range") \
    X(PAC_ERR_UART_OPEN_FAILED,                 0x50006, "Failed to open COM port") \
    X(PAC_ERR_UART_GET_COMM_MODEM_STATUS_ERROR, 0x50007, "Cannot read modem status") \
    X(PAC_ERR_UART_GET_WRONG_LINE_STATUS,       0x50008, "Wrong line status")  \
    X(PAC_ERR_UART_INTERNAL_BUFFER_OVERFLOW,    0x50009, "Internal buffer overflow") \
    X(PAC_ERR_IO_NOT_SUPPORT,                   0x60001, "Not supported by the module") \
    X(PAC_ERR_IO_ID,                            0x60002, "Invalid module ID")  \
    X(PAC_ERR_IO_SLOT,                          0x60003, "Invalid slot")       \
    X(PAC_ERR_IO_CHANNEL,                       0x60004, "Invalid channel")    \
    X(PAC_ERR_IO_GAIN,                          0x60005, "Invalid gain")       \
    X(PAC_ERR_IO_INT_MODE,                      0x60006, "Invalid interrupt mode") \
    X(PAC_ERR_IO_VALUE_OUT_OF_RANGE,            0x60007, "Value out of range") \
    X(PAC_ERR_IO_CHANNEL_OUT_OF_RANGE,          0x60008, "Channel out of range")

/* Text for every code not in the table. */
#define PACSDK_UNKNOWN_ERROR_TEXT "Unknown error"

#ifdef __cplusplus
/* Typed constants: compare and mix with a 32-bit unsigned code without
 * enum warnings. */
#define PACSDK_ERROR_CONSTANT(name, value, text) inline constexpr unsigned int name = value;
PACSDK_ERROR_TABLE(PACSDK_ERROR_CONSTANT)
#undef PACSDK_ERROR_CONSTANT
#else
#define PACSDK_ERROR_ENUMERATOR(name, value, text) name = value,
enum PacErrorCode { PACSDK_ERROR_TABLE(PACSDK_ERROR_ENUMERATOR) };
#undef PACSDK_ERROR_ENUMERATOR
#endif

#endif /* PACSDK_ERRORS_H */
