// The fifteen USB I/O models, their type codes, ranges and raw codes.
#include <algorithm>
#include <cmath>

#include "sim.h"

namespace usbsim {
namespace {

// Analog input type codes, shared numbering with the serial modules.
constexpr std::uint8_t kAiAll[] = {0x00, 0x01, 0x02, 0x03, 0x04, 0x05, 0x06, 0x07, 0x08,
                                   0x09, 0x0A, 0x0B, 0x0C, 0x0D, 0x0E, 0x0F, 0x10, 0x11,
                                   0x12, 0x13, 0x14, 0x15, 0x16, 0x17, 0x18, 0x19, 0x1A};
constexpr std::uint8_t kAiVoltageCurrent[] = {0x07, 0x08, 0x09, 0x0A, 0x0B, 0x0C, 0x0D, 0x1A};
constexpr std::uint8_t kAoTypes[] = {0x30, 0x31, 0x32, 0x33, 0x34, 0x35};
constexpr std::uint8_t kPiTypes[] = {0x50, 0x51, 0x54, 0x55, 0x56};
constexpr std::span<const std::uint8_t> kNone{};

constexpr std::uint8_t mask_of(std::uint8_t ai, std::uint8_t ao, std::uint8_t di, std::uint8_t dout,
                               std::uint8_t pi, std::uint8_t po) {
    return static_cast<std::uint8_t>((di ? USBIO_GROUP_DI : 0) | (dout ? USBIO_GROUP_DO : 0) |
                                     (ai ? USBIO_GROUP_AI : 0) | (ao ? USBIO_GROUP_AO : 0) |
                                     (pi ? USBIO_GROUP_PI : 0) | (po ? USBIO_GROUP_PO : 0));
}

constexpr std::uint8_t u8(int v) { return static_cast<std::uint8_t>(v); }

struct Row {
    const char* id;
    std::uint16_t type_code;
    std::uint8_t ai, ao, di, dout, pi, po;
    std::span<const std::uint8_t> ai_types, ao_types, pi_types;
};

constexpr Model model_of(const Row& r) {
    return Model{r.id,
                 r.type_code,
                 r.ai,
                 r.ao,
                 r.di,
                 r.dout,
                 r.pi,
                 r.po,
                 mask_of(r.ai, r.ao, r.di, r.dout, r.pi, r.po),
                 r.ai_types,
                 r.ao_types,
                 r.pi_types,
                 u8(r.ai ? 0x08 : 0),  // +-10 V
                 u8(r.ao ? 0x32 : 0),  // 0-10 V
                 u8(r.pi ? 0x50 : 0),  // up counter
                 u8(r.ai ? 16 : 0),
                 u8(r.ao ? 12 : 0)};
}

//                 id            code    AI AO  DI  DO PI PO  AI types           AO types  PI types
constexpr Row kRows[] = {
    {"USB2019",    0x413,  8, 0,  0,  0, 0, 0, kAiAll,            kNone,    kNone},
    {"USB2026",    0x41A,  5, 2,  2,  3, 0, 0, kAiVoltageCurrent, kAoTypes, kNone},
    {"USB2045",    0x42D,  0, 0,  0, 16, 0, 0, kNone,             kNone,    kNone},
    {"USB2051",    0x433,  0, 0, 16,  0, 0, 0, kNone,             kNone,    kNone},
    {"USB2055",    0x437,  0, 0,  8,  8, 0, 0, kNone,             kNone,    kNone},
    {"USB2060",    0x43C,  0, 0,  6,  6, 0, 0, kNone,             kNone,    kNone},
    {"USB2064",    0x440,  0, 0,  0,  8, 0, 0, kNone,             kNone,    kNone},
    {"USB2084",    0x454,  0, 0,  0,  0, 8, 0, kNone,             kNone,    kPiTypes},
    {"USB2055_32", 0x464,  0, 0, 16, 16, 0, 0, kNone,             kNone,    kNone},
    {"USB2068_18", 0x465,  0, 0,  0, 18, 0, 0, kNone,             kNone,    kNone},
    {"USB2045_32", 0x466,  0, 0,  0, 32, 0, 0, kNone,             kNone,    kNone},
    {"USB2051_32", 0x467,  0, 0, 32,  0, 0, 0, kNone,             kNone,    kNone},
    {"USB2060_24", 0x468,  0, 0, 12, 12, 0, 0, kNone,             kNone,    kNone},
    {"USB2064_16", 0x469,  0, 0,  0, 16, 0, 0, kNone,             kNone,    kNone},
    {"USB2069_18", 0x46A,  0, 0,  0, 18, 0, 0, kNone,             kNone,    kNone},
};

template <std::size_t... I>
constexpr std::array<Model, sizeof...(I)> make_models(std::index_sequence<I...>) {
    return {model_of(kRows[I])...};
}
constexpr auto kModels = make_models(std::make_index_sequence<std::size(kRows)>{});

struct RangeRow {
    std::uint8_t code;
    Range range;
};

constexpr RangeRow kAiRanges[] = {
    {0x00, {-15, 15}},     {0x01, {-50, 50}},     {0x02, {-100, 100}},   {0x03, {-500, 500}},
    {0x04, {-1, 1}},       {0x05, {-2.5, 2.5}},   {0x06, {-20, 20}},     {0x07, {4, 20}},
    {0x08, {-10, 10}},     {0x09, {-5, 5}},       {0x0A, {-1, 1}},       {0x0B, {-500, 500}},
    {0x0C, {-150, 150}},   {0x0D, {-20, 20}},     {0x0E, {-210, 760}},   {0x0F, {-270, 1372}},
    {0x10, {-270, 400}},   {0x11, {-270, 1000}},  {0x12, {0, 1768}},     {0x13, {0, 1768}},
    {0x14, {0, 1820}},     {0x15, {-270, 1300}},  {0x16, {0, 2320}},     {0x17, {-200, 800}},
    {0x18, {-200, 100}},   {0x19, {-200, 900}},   {0x1A, {0, 20}},
};

constexpr RangeRow kAoRanges[] = {
    {0x30, {0, 20}}, {0x31, {4, 20}}, {0x32, {0, 10}}, {0x33, {-10, 10}}, {0x34, {0, 5}}, {0x35, {-5, 5}},
};

template <std::size_t N>
std::optional<Range> range_in(const RangeRow (&rows)[N], std::uint8_t code) {
    for (const auto& r : rows)
        if (r.code == code) return r.range;
    return std::nullopt;
}

constexpr double kAoSteps = 4095.0;

}  // namespace

std::span<const Model> models() { return kModels; }

const Model* find_model(const std::string& id) {
    for (const auto& m : kModels)
        if (id == m.id) return &m;
    return nullptr;
}

const Model* find_model_by_code(std::uint16_t type_code) {
    for (const auto& m : kModels)
        if (m.type_code == type_code) return &m;
    return nullptr;
}

std::optional<Range> ai_range(std::uint8_t type_code) { return range_in(kAiRanges, type_code); }
std::optional<Range> ao_range(std::uint8_t type_code) { return range_in(kAoRanges, type_code); }

std::uint32_t ai_raw_from_value(std::uint8_t type_code, double value) {
    auto r = ai_range(type_code);
    if (!r || std::isnan(value)) return 0;
    value = std::clamp(value, r->low, r->high);
    double scale = std::max(std::fabs(r->low), std::fabs(r->high));
    double code = value >= 0 ? std::round(value / scale * 32767.0) : std::round(value / scale * 32768.0);
    code = std::clamp(code, -32768.0, 32767.0);
    auto c16 = static_cast<std::int16_t>(code);
    return static_cast<std::uint16_t>(c16);
}

double ai_value_from_raw(std::uint8_t type_code, std::uint32_t raw) {
    auto r = ai_range(type_code);
    if (!r) return 0.0;
    double scale = std::max(std::fabs(r->low), std::fabs(r->high));
    auto code = static_cast<std::int16_t>(static_cast<std::uint16_t>(raw & 0xFFFFu));
    return code >= 0 ? code * scale / 32767.0 : code * scale / 32768.0;
}

std::uint32_t ao_raw_from_value(std::uint8_t type_code, double value) {
    auto r = ao_range(type_code);
    if (!r || std::isnan(value)) return 0;
    value = std::clamp(value, r->low, r->high);
    return static_cast<std::uint32_t>(std::lround((value - r->low) / (r->high - r->low) * kAoSteps));
}

double ao_value_from_raw(std::uint8_t type_code, std::uint32_t raw) {
    auto r = ao_range(type_code);
    if (!r) return 0.0;
    return r->low + std::min<double>(raw, kAoSteps) * (r->high - r->low) / kAoSteps;
}

namespace detail {

bool is_thermocouple(std::uint8_t code) { return code >= 0x0E && code <= 0x19; }
bool is_pair_mode(std::uint8_t code) { return code == 0x54 || code == 0x55 || code == 0x56; }
bool supports(std::span<const std::uint8_t> list, std::uint8_t code) {
    return std::find(list.begin(), list.end(), code) != list.end();
}

}  // namespace detail
}  // namespace usbsim
