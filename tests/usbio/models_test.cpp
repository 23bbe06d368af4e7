// Every model answers with the totals, mask and identity of the table,
// keeps its words to its channels, and refuses the groups and channels it
// lacks.
#include <algorithm>
#include <cmath>
#include <ostream>

#include "fixture.h"

namespace usbsim {
// Test names and failures show the model by its ID.
void PrintTo(const Model& m, std::ostream* os) { *os << m.id; }
}  // namespace usbsim

namespace {

class usbioModel : public UsbioTest, public ::testing::WithParamInterface<usbsim::Model> {};

std::string model_name(const ::testing::TestParamInfo<usbsim::Model>& info) { return info.param.id; }
std::uint32_t bits(unsigned n) { return n >= 32 ? 0xFFFFFFFFu : (1u << n) - 1u; }

TEST_P(usbioModel, AnswersAsItsTableRow) {
    const usbsim::Model& m = GetParam();
    USBIO_HANDLE h = attach_and_open(m.id, 3);
    std::uint8_t bytes[16] = {};
    std::uint32_t word = 0xFFFFFFFF;
    // Each group: its total and mask bit, a group call refused without it,
    // and its last channel taken but not the next.
    struct {
        std::int32_t (*total)(USBIO_HANDLE, std::uint8_t*);
        std::uint8_t expected, group_bit;
        std::int32_t code;
        std::int32_t (*set)(USBIO_HANDLE, std::uint8_t);
    } const groups[] = {
        {GetDITotal, m.di, USBIO_GROUP_DI, DI_ReadValue(h, &word), [](USBIO_HANDLE d, std::uint8_t ch) { return DI_WriteClearCounter(d, ch); }},
        {GetDOTotal, m.do_, USBIO_GROUP_DO, DO_ReadValue(h, &word), [](USBIO_HANDLE d, std::uint8_t ch) { return DO_WriteChannelValue(d, ch, 1); }},
        {GetAITotal, m.ai, USBIO_GROUP_AI, AI_GetTypeCode(h, bytes), [](USBIO_HANDLE d, std::uint8_t ch) { return AI_SetChCJCOffset(d, ch, 1.0f); }},
        {GetAOTotal, m.ao, USBIO_GROUP_AO, AO_GetTypeCode(h, bytes), [](USBIO_HANDLE d, std::uint8_t ch) { return AO_WriteChannelValueDigital(d, ch, 0); }},
        {GetPITotal, m.pi, USBIO_GROUP_PI, PI_GetTypeCode(h, bytes), [](USBIO_HANDLE d, std::uint8_t ch) { return PI_ClearSingleChCount(d, ch); }},
        {GetPOTotal, m.po, USBIO_GROUP_PO, USBIO_ERR_NOT_SUPPORTED, nullptr},
    };
    std::uint8_t mask = 0;
    ASSERT_EQ(GetSupportIOMask(h, &mask), USBIO_OK);
    for (const auto& g : groups) {
        std::uint8_t total = 0xEE;
        EXPECT_EQ(g.total(h, &total), USBIO_OK);
        EXPECT_EQ(total, g.expected);
        EXPECT_EQ((mask & g.group_bit) != 0, g.expected != 0);
        if (!g.set) continue;
        EXPECT_EQ(g.code, g.expected ? USBIO_OK : USBIO_ERR_NOT_SUPPORTED);
        if (g.expected == 0) continue;
        EXPECT_EQ(g.set(h, static_cast<std::uint8_t>(g.expected - 1)), USBIO_OK);
        EXPECT_EQ(g.set(h, g.expected), USBIO_ERR_PARAMETER);
    }
    std::uint32_t id = 0;
    EXPECT_EQ(GetDeviceID(h, &id), USBIO_OK);
    EXPECT_EQ(id, m.type_code | (3u << 16));
    std::uint16_t fw = 0;
    EXPECT_EQ(GetFwVer(h, &fw), USBIO_OK);
    EXPECT_EQ(fw, 0x0102);
    // Words keep the module's channels; the DO power-on table has 32 entries.
    if (m.do_) {
        word = 0xFFFFFFFF;
        ASSERT_EQ(DO_WriteValue(h, &word), USBIO_OK);
        ASSERT_EQ(DO_ReadValue(h, &word), USBIO_OK);
        EXPECT_EQ(word, bits(m.do_));
        EXPECT_EQ(DO_SetPowerOnEnable(h, 31, 1), USBIO_OK);
        EXPECT_EQ(DO_SetPowerOnEnable(h, 32, 1), USBIO_ERR_PARAMETER);
    }
    if (m.di) {
        ASSERT_TRUE(usbsim::set_di(m.type_code, 3, 0xFFFFFFFF));
        ASSERT_EQ(DI_SetDigitalValueInverse(h, 0x1), USBIO_OK);
        ASSERT_EQ(DI_ReadValue(h, &word), USBIO_OK);
        EXPECT_EQ(word, bits(m.di) & ~1u);  // the signal xor the inverse
    }
}

INSTANTIATE_TEST_SUITE_P(AllModels, usbioModel, ::testing::ValuesIn(usbsim::models().begin(), usbsim::models().end()),
                         model_name);

// Lookups both ways find the row; totals and type lists fit the buffers.
TEST(usbioModelTable, RowsFitTheBuffers) {
    for (const auto& m : usbsim::models()) {
        EXPECT_EQ(usbsim::find_model(m.id), &m);
        EXPECT_EQ(usbsim::find_model_by_code(m.type_code), &m);
        EXPECT_LE(std::max(m.di, m.do_), 32);
        EXPECT_LE(std::max({m.ai, m.ao, m.pi}), 16);
        EXPECT_LE(m.ai_types.size(), 64u);
        if (m.ai) {
            EXPECT_NE(std::find(m.ai_types.begin(), m.ai_types.end(), m.ai_default_type), m.ai_types.end());
        }
        if (m.ao) {
            EXPECT_NE(std::find(m.ao_types.begin(), m.ao_types.end(), m.ao_default_type), m.ao_types.end());
        }
    }
}

// Raw codes and real values agree for every AI type code: full scale at the
// end of larger magnitude, zero at zero, one step of error at most.
TEST(usbioAiCodes, RawAndRealAgreeOnEveryRange) {
    for (int code = 0; code <= 0x1A; ++code) {
        auto tc = static_cast<std::uint8_t>(code);
        auto r = usbsim::ai_range(tc);
        ASSERT_TRUE(r) << code;
        double scale = std::max(std::fabs(r->low), std::fabs(r->high));
        bool high_is_larger = std::fabs(r->high) >= std::fabs(r->low);
        EXPECT_EQ(usbsim::ai_raw_from_value(tc, high_is_larger ? r->high : r->low),
                  high_is_larger ? 0x7FFFu : 0x8000u)
            << code;
        if (r->low <= 0.0) {
            EXPECT_EQ(usbsim::ai_raw_from_value(tc, 0.0), 0u);
        }
        for (double f : {0.0, 0.13, 0.5, 0.77, 1.0}) {
            double v = r->low + f * (r->high - r->low);
            double back = usbsim::ai_value_from_raw(tc, usbsim::ai_raw_from_value(tc, v));
            EXPECT_NEAR(back, v, scale / 32767.0) << code << " " << v;
        }
    }
}

}  // namespace
