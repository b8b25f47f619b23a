#include "Plugins/ModbusTcp/OrderDiagnosis.h"
#include "Plugins/ModbusTcp/Blocks/LayoutFacts.h"
#include "Support/RandomDraws.h"
#include "Support/Refusal.h"
#include "Tests/Plugins/ModbusTcp/BlockFixture.h"

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace ModbusTcp
{

using ZuControl::ControlProtocol::BlockOrder;
using ZuTest::Refusal;
using ZuTest::RefusalOf;

class OrderDiagnosisTest : public BlockFixture
{
protected:
    /// With a block at 300 that sends ABCD.
    static OrderFinding Ask(uint32 address, std::string const& type, std::string const& shown, BlockOrder order = {})
    {
        return Diagnose({address, type, shown}, {{300, order}});
    }
};

namespace
{

struct Case
{
    uint32 address;
    char const* type;
    char const* shown;
    bool isRight;
    char const* masterOrder;
    char const* answer;
};

Case const CASES[] = {
    {302, "UDINT", "1234567890", true, "ABCD",
     "Your master reads 32 bit values right: it reads ABCD, and the block sends ABCD."},
    {302, "UDINT", "47335830", false, "CDAB",
     "Your master swaps the words of 32 bit values: it reads CDAB, and the block sends ABCD. Either set registerOrder "
     "to 1 (little endian), so that the blocks send CDAB, or change \"swap words\" in the master, so that it reads "
     "ABCD."},
    {302, "udint", "0x9649D202", false, "BADC",
     "Your master swaps the bytes of 32 bit values: it reads BADC, and the block sends ABCD. Either set registerOrder "
     "to 2 (big endian, bytes swapped), so that the blocks send BADC, or change \"swap bytes\" in the master, so that "
     "it reads ABCD."},
    {302, "DWORD", "16#D2029649", false, "DCBA",
     "Your master swaps the words and the bytes of 32 bit values: it reads DCBA, and the block sends ABCD. Either set "
     "registerOrder to 3 (little endian, bytes swapped), so that the blocks send DCBA, or change \"swap words\" and "
     "\"swap bytes\" in the master, so that it reads ABCD."},
    {304, "DINT", "-1234567890", true, "ABCD",
     "Your master reads 32 bit values right: it reads ABCD, and the block sends ABCD."},
    {302, "DINT", "1234567890 -1234567890", true, "ABCD",
     "Your master reads 32 bit values right: it reads ABCD, and the block sends ABCD."},
    {306, "ULINT", "12345678901234567890", true, "ABCD",
     "Your master reads 64 bit values right: it reads ABCD, and the block sends ABCD."},
    {310, "LINT", "16#7EEB8216EF0BEEDD", false, "CDAB",
     "Your master swaps the words of 64 bit values: it reads CDAB, and the block sends ABCD. Either set registerOrder "
     "to 1 (little endian), so that the blocks send CDAB, or change \"swap words\" in the master, so that it reads "
     "ABCD."},
    {310, "LINT", "0X82167EEBEEDDEF0B", false, "EFGHABCD",
     "Your master reads 64 bit values as EFGHABCD: it exchanges the two halves. The blocks have no such order: choose "
     "another order for 64 bit values in the master, or read two UDINT in place of each."},
    {310, "LINT", "0xEF0BEEDD7EEB8216", false, "CDABGHEF",
     "Your master reads 64 bit values as CDABGHEF: it exchanges the registers of each half. The blocks have no such "
     "order: choose another order for 64 bit values in the master, or read two UDINT in place of each."},
    {310, "LINT", "0x1682EB7EDDEE0BEF", false, "FEHGBADC",
     "Your master reads 64 bit values as FEHGBADC: it exchanges the two halves. The blocks have no such order: choose "
     "another order for 64 bit values in the master, or read two UDINT in place of each."},
    {310, "LINT", "0x0BEFDDEEEB7E1682", false, "DCBAHGFE",
     "Your master reads 64 bit values as DCBAHGFE: it exchanges the registers of each half. The blocks have no such "
     "order: choose another order for 64 bit values in the master, or read two UDINT in place of each."},
    {314, "REAL", "123.456", true, "ABCD",
     "Your master reads 32 bit values right: it reads ABCD, and the block sends ABCD."},
    {314, "float", "-1.88333e+25", false, "CDAB",
     "Your master swaps the words of 32 bit values: it reads CDAB, and the block sends ABCD. Either set registerOrder "
     "to 1 (little endian), so that the blocks send CDAB, or change \"swap words\" in the master, so that it reads "
     "ABCD."},
    {316, "LREAL", "123457", true, "ABCD",
     "Your master reads 64 bit values right: it reads ABCD, and the block sends ABCD."},
    {314, "", "17142 and 59769", true, "",
     "Your master shows the registers as they are meant. Registers of 16 bits do not tell the order of words: read the "
     "UDINT at 302 too."},
    {301, "INT", "-12345", true, "",
     "Your master shows the registers as they are meant. Registers of 16 bits do not tell the order of words: read the "
     "UDINT at 302 too."},
    {300, "UINT", "14640, 51151", false, "",
     "Your master swaps the bytes of each register. Either set registerOrder to 2 (big endian, bytes swapped), so that "
     "the blocks send BADC, or change \"swap bytes\" in the master. Then read the UDINT at 302, which tells the order "
     "of words."},
    {302, "UDINT", "3523384905", false, "DCBA",
     "Your master swaps the words and the bytes of 32 bit values: it reads DCBA, and the block sends ABCD. Either set "
     "registerOrder to 3 (little endian, bytes swapped), so that the blocks send DCBA, or change \"swap words\" and "
     "\"swap bytes\" in the master, so that it reads ABCD."},
    {320, "STRING", " ABCDEFGH\n", true, "", "Your master shows texts right."},
    {320, "TEXT", "BADCFEHG", false, "",
     "Your master swaps the bytes of texts. Change \"swap bytes\" in the master, or give the blocks the order BADC."},
    {320, "STRING", "CDABGHEF", false, "",
     "Your master swaps the registers of texts. The registers of a text always come in their order: switch \"swap "
     "words\" off in the master for texts."},
    {320, "STRING", "HGFEDCBA", false, "",
     "Your master swaps the registers and the bytes of texts. Change \"swap bytes\" in the master, or give the blocks "
     "the order BADC. The registers of a text always come in their order: switch \"swap words\" off in the master for "
     "texts."},
    {320, "STRING", "ABCD", true, "", "Your master shows texts right."},
    {303, "UDINT", "1234567890", true, "ABCD",
     "Your master reads 32 bit values right: it reads ABCD, and the block sends ABCD. Your master counts from 1: its "
     "303 is register 302."},
    {40303, "UDINT", "47335830", false, "CDAB",
     "Your master swaps the words of 32 bit values: it reads CDAB, and the block sends ABCD. Either set registerOrder "
     "to 1 (little endian), so that the blocks send CDAB, or change \"swap words\" in the master, so that it reads "
     "ABCD. Your master counts from 40001: its 40303 is register 302."},
    {400301, "UINT", "12345", true, "",
     "Your master shows the registers as they are meant. Registers of 16 bits do not tell the order of words: read the "
     "UDINT at 400303 too. Your master counts from 400001: its 400301 is register 300."},
    {302, "UDINT", "7", false, "",
     "No order of the block gives this. Check the address and the data type in the master: at register 302 it should "
     "show UDINT 1234567890."},
    {304, "INT32", "7", false, "",
     "No order of the block gives this. Check the address and the data type in the master: at register 302 it should "
     "show UDINT 1234567890."},
    {314, "REAL", "nan", false, "",
     "No order of the block gives this. Check the address and the data type in the master: at register 314 it should "
     "show REAL 123.456."},
    {320, "STRING", "XY", false, "",
     "No order of the block gives this. Check the address and the data type in the master: at register 320 it should "
     "show STRING ABCDEFGH."},
};

} // namespace

TEST_F(OrderDiagnosisTest, AnswersInWords)
{
    for (Case const& one : CASES)
    {
        SCOPED_TRACE(std::to_string(one.address) + " " + one.type + " " + one.shown);
        OrderFinding const finding = Ask(one.address, one.type, one.shown);
        EXPECT_EQ(finding.isRight, one.isRight);
        EXPECT_EQ(finding.masterOrder, one.masterOrder);
        EXPECT_EQ(finding.answer, one.answer);
    }
}

TEST_F(OrderDiagnosisTest, TakesTheOrderOfTheBlockIntoAccount)
{
    BlockOrder const little{false, false};
    EXPECT_TRUE(Ask(302, "UDINT", "47335830", {true, true}).answer.find("it reads DCBA, and the block sends BADC") !=
                std::string::npos)
        << Ask(302, "UDINT", "47335830", {true, true}).answer;
    EXPECT_EQ(Ask(302, "UDINT", "1234567890", little).masterOrder, "CDAB");
    EXPECT_TRUE(Ask(302, "UDINT", "1234567890", little).isRight);
    EXPECT_EQ(Ask(302, "UDINT", "47335830", little).answer,
              "Your master swaps the words of 32 bit values: it reads ABCD, and the block sends CDAB. Either set "
              "registerOrder to 0 (big endian), so that the blocks send ABCD, or change \"swap words\" in the master, "
              "so that it reads CDAB.");
    EXPECT_TRUE(Ask(300, "UINT", "12345", {false, true}).isRight);
    EXPECT_TRUE(Ask(320, "STRING", "ABCDEFGH", {false, true}).isRight);
}

TEST_F(OrderDiagnosisTest, KnowsTheRegistersThatTheBlockSends)
{
    auto const block = Place("OrderTest", 300);
    for (auto const& [name, order] : std::map<std::string, BlockOrder>{
             {"ABCD", {true, false}}, {"CDAB", {false, false}}, {"BADC", {true, true}}, {"DCBA", {false, true}}})
    {
        SetOrder(300, name);
        auto const sent = SentRegisters(order);
        EXPECT_EQ(std::vector<uint16>(sent.begin(), sent.end()), Encode(*block, LayoutFacts())) << name;
    }
}

TEST_F(OrderDiagnosisTest, CannotMistakeOneOrderForAnother)
{
    for (OrderPattern const& pattern : OrderPatterns())
    {
        std::set<uint8> bytes;
        for (int i = 0; i < 2 * pattern.registers; ++i)
        {
            bytes.insert(static_cast<uint8>(pattern.bits >> 8 * i));
        }
        EXPECT_EQ(bytes.size(), 2u * pattern.registers) << pattern.type;
    }
    std::set<uint16> registers;
    for (uint16 const sent : SentRegisters({}))
    {
        registers.insert(sent);
        registers.insert(static_cast<uint16>(sent << 8 | sent >> 8));
    }
    EXPECT_EQ(registers.size(), 2u * OrderTestBlock::REGISTERS) << "also with their bytes swapped";
}

TEST_F(OrderDiagnosisTest, FindsTheBlockAmongSeveral)
{
    std::vector<OrderTestPlace> const places = {{300, {}}, {400, {false, false}}};
    EXPECT_EQ(Diagnose({402, "UDINT", "1234567890"}, places).masterOrder, "CDAB");
    EXPECT_EQ(Diagnose({302, "UDINT", "1234567890"}, places).masterOrder, "ABCD");
}

TEST_F(OrderDiagnosisTest, AnswersOrRefusesAnyText)
{
    static constexpr char const* TYPES[] = {"", "INT", "UDINT", "LINT", "REAL", "LREAL", "STRING", "QUAD"};
    static constexpr char LETTERS[] = "0123456789-+.eExX#aAfF ,;n\t\"\xC3\xBC\xFF";
    ZuTest::RandomDraws draws(20261122);
    for (int i = 0; i < ZuTest::OperationsOf(100'000); ++i)
    {
        std::string shown;
        for (uint32 left = draws.Below(40); left > 0; --left)
        {
            shown += LETTERS[draws.Below(sizeof LETTERS - 1)];
        }
        std::string answer;
        Refusal const refusal =
            RefusalOf([&] { answer = Ask(280 + draws.Below(60), TYPES[draws.Below(8)], shown).answer; });
        ASSERT_TRUE(!answer.empty() || (refusal.status == Zu::Status::BAD_ARGUMENT && !refusal.text.empty()))
            << shown << ", " << draws;
    }
}

TEST_F(OrderDiagnosisTest, RefusesWhatItCannotRead)
{
    struct Refused
    {
        uint32 address;
        char const* type;
        char const* shown;
        char const* text;
    };
    Refused const refused[] = {
        {300, "QUAD", "1",
         "There is no type QUAD. The types are UINT, INT, UDINT, DINT, ULINT, LINT, REAL, LREAL and STRING."},
        {300, "", "", "Tell the values that the master shows, \"17142 59769\" for example."},
        {300, "", " , and", "Tell the values that the master shows, \"17142 59769\" for example."},
        {300, "", "12x", "\"12x\" is no value of the type UINT."},
        {300, "UINT", "65536", "\"65536\" is no value of the type UINT."},
        {300, "INT", "-32769", "\"-32769\" is no value of the type INT."},
        {300, "INT", "-", "\"-\" is no value of the type INT."},
        {302, "DINT", "4294967296", "\"4294967296\" is no value of the type DINT."},
        {306, "ULINT", "18446744073709551616", "\"18446744073709551616\" is no value of the type ULINT."},
        {302, "UDINT", "0x", "\"0x\" is no value of the type UDINT."},
        {302, "UDINT", "16#1FFFFFFFF", "\"16#1FFFFFFFF\" is no value of the type UDINT."},
        {302, "UDINT", "1.5", "\"1.5\" is no value of the type UDINT."},
        {314, "REAL", "1,5x", "\"5x\" is no value of the type REAL."},
        {320, "STRING", "ABC", "Tell the text that the master shows, two characters for each register."},
        {320, "STRING", " \n", "Tell the text that the master shows, two characters for each register."},
        {5, "UINT", "1", "The values at 5 do not lie in the OrderTest block, which takes the registers 300 to 323."},
        {324, "UDINT", "1",
         "The values at 324 do not lie in the OrderTest block, which takes the registers 300 to 323."},
        {4294967295, "UINT", "1",
         "The values at 4294967295 do not lie in the OrderTest block, which takes the registers 300 to 323."},
    };
    for (Refused const& one : refused)
    {
        EXPECT_EQ(RefusalOf([&] { Ask(one.address, one.type, one.shown); }),
                  (Refusal{Zu::Status::BAD_ARGUMENT, one.text}));
    }
    EXPECT_EQ(RefusalOf([] {
                  Diagnose({300, "", "1"}, {});
              }),
              (Refusal{Zu::Status::WRONG_STATE, "There is no block of the type OrderTest. Add one first."}));
}

} // namespace ModbusTcp
