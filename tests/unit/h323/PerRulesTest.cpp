// The aligned PER rules where encoders and decoders usually go wrong, checked
// against hand-computed octets, and the lenient decoding deployed stacks rely on.

#include <gtest/gtest.h>

#include <functional>

#include "Bytes.h"
#include "h323/Per.h"

namespace h323::per {
namespace {

using test::bytes;
using test::hex;

// A leading BOOLEAN puts one bit before the value under test, so that
// alignment (or its absence) shows in the octets.
struct AfterOneBit {
    explicit AfterOneBit(const Type& t) : components{{"flag", Boolean}, {"value", t}} {}
    const Component components[2];
    const Type type = sequence("AfterOneBit", components);

    std::string encode(const std::function<void(Builder::Slot)>& fill) const {
        Builder b(type);
        b.root()["flag"].setBool(true);
        fill(b.root()["value"]);
        std::vector<uint8_t> out;
        EXPECT_TRUE(per::encode(b.value(), out));
        return hex(out);
    }
    Value decode(Decoder& d, const std::vector<uint8_t>& wire) const {
        return d.decode(type, wire.data(), wire.size())["value"];
    }
};

const Type Int0_5 = integer(0, 5);
const Type Int0_7 = integer(0, 7);
const Type Int0_255 = integer(0, 255);
const Type Int0_256 = integer(0, 256);
const Type Int0_65535 = integer(0, 65535);
const Type Int0_65536 = integer(0, 65536);
const Type Int1_4G = integer(1, 4294967295);
const Type Int0_4G = integer(0, 4294967295);
const Type IntExt = integer(0, 7, Extensible);
const Type IntFrom1 = integerFrom(1);

TEST(PerInteger, EncodesToHandComputedOctetsAtEachRangeEdgeAndDecodesBack) {
    const struct {
        const Type& type;
        int64_t value;
        const char* wire;
    } cases[] = {
        {Int0_7, 7, "f0"},        // below 256 values: bits, unaligned
        {Int0_255, 255, "80ff"},  // then aligned octets
        {Int0_256, 256, "800100"},
        {Int0_65535, 65535, "80ffff"},
        {Int0_65536, 65536, "c0010000"},  // beyond 64K values: a 2-bit octet count, then the minimal octets
        {Int1_4G, 1, "8000"},
        {Int0_4G, 4294967295, "e0ffffffff"},
        {IntExt, 5, "a8"},            // 1 0 101
        {IntExt, -1, "c001ff"},       // outside the root: 1 1, length 1, 0xff
        {IntFrom1, 257, "80020100"},  // length 2, 257 - 1
    };
    Decoder d;
    for (const auto& c : cases) {
        AfterOneBit s(c.type);
        EXPECT_EQ(s.encode([&](Builder::Slot v) { v.setInteger(c.value); }), c.wire) << c.value;
        EXPECT_EQ(s.decode(d, bytes(c.wire)).integer(), c.value) << c.wire;
    }
    AfterOneBit outOfRange(Int0_7);
    Builder b(outOfRange.type);
    b.root()["flag"].setBool(false);
    b.root()["value"].setInteger(8);
    std::vector<uint8_t> out;
    EXPECT_FALSE(encode(b.value(), out));
}

const Component Abc_[] = {Component("a"), Component("b"), Component("c")};
const Type Abc = enumerated("Abc", Abc_);
const Component Choice3_[] = {{"x", Null}, {"y", Null}, {"z", Boolean}};
const Type Choice3 = choice("Choice3", Choice3_);
const Type Octets1_5 = octetString(size(1, 5));

TEST(PerLeniency, OutOfRangeIndicesAndSizesAreClampedAndTrailingBytesIgnored) {
    Decoder d;
    EXPECT_EQ(AfterOneBit(Int0_5).decode(d, bytes("f0")).integer(), 5);     // 1 111
    EXPECT_EQ(AfterOneBit(Abc).decode(d, bytes("e0")).enumName(), "c");     // 1 11
    EXPECT_EQ(AfterOneBit(Choice3).decode(d, bytes("f0")).tagName(), "z");  // 1 11, then z's value
    // 1 111: 1 + 7 = 8 octets -> 5
    EXPECT_EQ(AfterOneBit(Octets1_5).decode(d, bytes("f0 0102030405")).bytes(), "\x01\x02\x03\x04\x05");
    EXPECT_EQ(AfterOneBit(Int0_255).decode(d, bytes("80ff deadbeef")).integer(), 255);
}

// ---- length determinants ----

std::string lengthPrefix(size_t n) {
    Builder b(OctetString);
    b.root().setBytes(std::string(n, 'x'));
    std::vector<uint8_t> out = encode(b.value());
    return hex(std::vector<uint8_t>(out.begin(), out.begin() + std::min<size_t>(out.size(), 3)));
}

TEST(PerLength, OneOctetBelow128TwoOctetsBelow16K) {
    EXPECT_EQ(lengthPrefix(0), "00");
    EXPECT_EQ(lengthPrefix(127), "7f7878");
    EXPECT_EQ(lengthPrefix(128), "808078");
    EXPECT_EQ(lengthPrefix(16383), "bfff78");
}

TEST(PerLength, From16KTheEncoderFragmentsIn16KBlocksWhichTheDecoderReadsAsEmpty) {
    Builder b(OctetString);
    b.root().setBytes(std::string(16384 * 5 + 3, 'x'));
    std::vector<uint8_t> out = encode(b.value());
    ASSERT_EQ(out.size(), 1 + 4 * 16384 + 1 + 16384 + 1 + 3);
    EXPECT_EQ(out[0], 0xc4);              // four blocks of 16K
    EXPECT_EQ(out[1 + 4 * 16384], 0xc1);  // one more
    EXPECT_EQ(out[2 + 5 * 16384], 0x03);  // the remainder
    Builder exact(OctetString);
    exact.root().setBytes(std::string(16384, 'x'));
    std::vector<uint8_t> whole = encode(exact.value());
    EXPECT_EQ(whole.size(), 1 + 16384 + 1);
    EXPECT_EQ(whole.back(), 0x00);  // a multiple of 16K still ends with a zero length
    Decoder d;
    Value v = d.decode(OctetString, whole.data(), whole.size());
    ASSERT_TRUE(v);
    EXPECT_EQ(v.bytes().size(), 0u);
}

const Type Bytes0_255 = sequenceOf(Int0_255, size(0, 255));
const Type LongText = ia5String(size(0, 20000));

TEST(PerLeniency, MoreThan128ListElementsOrAStringOver16KFails) {
    Decoder d;
    for (size_t n : {128u, 129u}) {
        std::vector<uint8_t> wire = {uint8_t(n)};
        wire.resize(1 + n, 7);
        EXPECT_EQ(bool(d.decode(Bytes0_255, wire.data(), wire.size())), n == 128) << n;
    }
    for (size_t n : {16384u, 16385u}) {
        Builder b(LongText);
        b.root().setText(std::string(n, 'a'));
        std::vector<uint8_t> wire = encode(b.value());
        EXPECT_EQ(bool(d.decode(LongText, wire.data(), wire.size())), n == 16384) << n;
    }
}

// ---- extensions ----

const Type Text = ia5String();
const Component Extended_[] = {{"a", Int0_255}, {"b", Boolean, Addition}, {"c", Text, Addition}};
const Type Extended = sequence("Extended", Extended_, Extensible);
const Component RootOnly_[] = {{"a", Int0_255}};
const Type RootOnly = sequence("RootOnly", RootOnly_, Extensible);

TEST(PerExtension, AdditionsTravelAsCountBitmapAndOpenTypes) {
    Builder b(Extended);
    b.root()["a"].setInteger(5);
    b.root()["b"].setBool(true);
    // ext bit, a aligned, count-1 = 0 in 7 bits, bitmap '1', open type of length 1 holding TRUE
    EXPECT_EQ(hex(encode(b.value())), "8005010180");
    Builder none(Extended);
    none.root()["a"].setInteger(5);
    EXPECT_EQ(hex(encode(none.value())), "0005");
}

TEST(PerExtension, UnknownAdditionsAreKeptAsOctetsAndEncodeBackUnchanged) {
    std::vector<uint8_t> wire = bytes("8005 0380 0180 020161");  // b and c present
    Decoder d;
    Value v = d.decode(RootOnly, wire.data(), wire.size());
    ASSERT_TRUE(v);
    ASSERT_EQ(v.componentCount(), 3u);
    EXPECT_EQ(v.component(1).kind(), Kind::Open);
    EXPECT_EQ(hex({v.component(2).bytes().begin(), v.component(2).bytes().end()}), "0161");
    EXPECT_EQ(hex(encode(v)), hex(wire));
    Value known = d.decode(Extended, wire.data(), wire.size());
    EXPECT_TRUE(known["b"].boolean());
    EXPECT_EQ(known["c"].text(), "a");
}

TEST(PerExtension, AKnownAdditionThatFailsToDecodeFailsTheWholeValue) {
    std::vector<uint8_t> wire = bytes("8005 0280 02 0561");  // c's open type claims 5 characters in 1 octet
    Decoder d;
    EXPECT_FALSE(d.decode(Extended, wire.data(), wire.size()));
    EXPECT_TRUE(d.decode(RootOnly, wire.data(), wire.size()));
}

const Component ExtChoice_[] = {{"p", Null}, {"q", Int0_255}, {"r", Boolean, Addition}};
const Type ExtChoice = choice("ExtChoice", ExtChoice_, Extensible);

TEST(PerExtension, ChoiceExtensionsAreOpenTypesAndUnknownOnesNeedContentsAndA32BitIndex) {
    Builder b(ExtChoice);
    b.root().choose("r").setBool(true);
    EXPECT_EQ(hex(encode(b.value())), "800180");  // 1, index 0 in 6 bits, open type
    Decoder d;
    std::vector<uint8_t> wire = bytes("810161");  // extension index 1: not in the table
    Value unknown = d.decode(ExtChoice, wire.data(), wire.size());
    ASSERT_TRUE(unknown);
    EXPECT_EQ(unknown.tag(), 3u);
    EXPECT_EQ(unknown.tagName(), "<3>");
    EXPECT_FALSE(unknown.is("r"));
    std::vector<uint8_t> empty = bytes("8100");  // the same, but empty
    EXPECT_FALSE(d.decode(ExtChoice, empty.data(), empty.size()));
    std::vector<uint8_t> four = bytes("c0 04 00000001 01 61");  // large form, index 1 in 4 octets
    EXPECT_EQ(d.decode(ExtChoice, four.data(), four.size()).tagName(), "<3>");
    std::vector<uint8_t> five = bytes("c0 05 0100000001 01 61");  // beyond 32 bits
    EXPECT_FALSE(d.decode(ExtChoice, five.data(), five.size()));
}

// ---- character strings ----

const Type Digits = ia5String(size(1, 128), "#*,0123456789");
const Type Ucs = bmpString(size(1, 256));
const Type Numeric = numericString(size(1, 4));

TEST(PerCharacters, PermittedAlphabetsSendIndicesAndBmpStringsSixteenBitsReadAsUtf8) {
    const struct {
        const Type& type;
        const char* text;
        const char* wire;
    } cases[] = {
        {Digits, "12#", "044500"},         // length-1 in 7 bits, aligned, indices 4 5 0 in 4 bits
        {Numeric, "0 9", "8010a0"},        // length-1 in 2 bits, aligned (4 x 4 bits reach 16), 1 0 10
        {Ucs, "A\xc3\xa9", "01004100e9"},  // "Aé"
    };
    Decoder d;
    for (const auto& c : cases) {
        Builder b(c.type);
        b.root().setText(c.text);
        std::vector<uint8_t> wire = encode(b.value());
        EXPECT_EQ(hex(wire), c.wire) << c.text;
        EXPECT_EQ(d.decode(c.type, wire.data(), wire.size()).text(), c.text);
    }
    EXPECT_EQ(d.decode(Ucs, bytes("01004100e9").data(), 5).bytes().size(), 4u);
    Builder bad(Digits);
    bad.root().setText("12a");
    std::vector<uint8_t> out;
    EXPECT_FALSE(encode(bad.value(), out));
}

const Type Octets2 = octetString(fixed(2));
const Type Octets3 = octetString(fixed(3));

TEST(PerOctets, FixedStringsOfTwoOctetsOrLessAreNotAligned) {
    EXPECT_EQ(AfterOneBit(Octets2).encode([](Builder::Slot v) { v.setBytes("\xab\xcd"); }), "d5e680");
    EXPECT_EQ(AfterOneBit(Octets3).encode([](Builder::Slot v) { v.setBytes("\xab\xcd\xef"); }), "80abcdef");
    Decoder d;
    EXPECT_EQ(AfterOneBit(Octets2).decode(d, bytes("d5e680")).bytes(), "\xab\xcd");
}

TEST(PerObjectIdentifier, ContentsAreBerArcsAndPrintDotted) {
    Builder b(ObjectIdentifier);
    b.root().setOid("0.0.8.2250.0.4");
    std::vector<uint8_t> wire = encode(b.value());
    EXPECT_EQ(hex(wire), "060008914a0004");  // 0.0 share one octet; 2250 takes two
    Decoder d;
    EXPECT_EQ(d.decode(ObjectIdentifier, wire.data(), wire.size()).text(), "0.0.8.2250.0.4");
}

TEST(PerDecoder, TruncatedInputFailsInsteadOfReadingPastTheEnd) {
    Builder b(Extended);
    b.root()["a"].setInteger(200);
    b.root()["c"].setText("hello");
    std::vector<uint8_t> wire = encode(b.value());
    Decoder d;
    for (size_t n = 0; n < wire.size(); ++n) {
        std::vector<uint8_t> cut(wire.begin(), wire.begin() + n);  // its own allocation: ASan sees overreads
        EXPECT_FALSE(d.decode(Extended, cut.data(), cut.size())) << n;
    }
    EXPECT_TRUE(d.decode(Extended, wire.data(), wire.size()));
}

}  // namespace
}  // namespace h323::per
