// Every described type, filled with generated values, must encode, decode
// to the same value and encode again to the same octets.

#include <gtest/gtest.h>

#include "Bytes.h"
#include "ValueGenerator.h"
#include "h323/H225.h"
#include "h323/H245.h"
#include "h323/Per.h"

namespace h323::per {
namespace {

std::vector<const Type*> describedTypes() {
    std::vector<const Type*> types(h225::kTypes, h225::kTypes + h225::kTypeCount);
    types.insert(types.end(), h245::kTypes, h245::kTypes + h245::kTypeCount);
    return types;
}

TEST(PerRoundTrip, EveryDescribedTypeDecodesToWhatWasEncodedAndEncodesBackIdentically) {
    Decoder decoder;
    size_t checked = 0;
    for (const Type* type : describedTypes()) {
        for (uint64_t seed = 1; seed <= 25; ++seed) {
            ValueGenerator gen(seed * 7919 + checked);
            Builder built(*type);
            gen.fill(built.root(), *type, 0);
            std::vector<uint8_t> wire;
            ASSERT_TRUE(encode(built.value(), wire)) << type->name << " seed " << seed;
            Value decoded = decoder.decode(*type, wire.data(), wire.size());
            ASSERT_TRUE(decoded) << type->name << " seed " << seed << ": " << test::hex(wire);
            EXPECT_EQ(toText(decoded), toText(built.value())) << type->name << " seed " << seed;
            std::vector<uint8_t> again;
            ASSERT_TRUE(encode(decoded, again)) << type->name;
            EXPECT_EQ(test::hex(again), test::hex(wire)) << type->name << " seed " << seed;
            ++checked;
        }
    }
    EXPECT_GE(checked, 25 * h225::kTypeCount);
}

TEST(PerTables, PermittedAlphabetsAreAscendingAndOptionalBitmapsFitTheDecoder) {
    for (const Type* type : describedTypes()) {
        EXPECT_LE(type->optionalCount, 64) << type->name;
        for (size_t i = 0; i < type->count; ++i) {
            const Type* c = type->components[i].type;
            if (!c || !c->alphabet)
                continue;
            std::string_view a = c->alphabet;
            EXPECT_TRUE(std::is_sorted(a.begin(), a.end())) << type->name << "." << type->components[i].name;
        }
    }
}

// The references the decoder's users read by are written by hand next to the
// tables: each must point at the component it is named after.
TEST(PerTables, EveryComponentReferencePointsAtTheComponentItIsNamedAfter) {
    std::vector<const Ref*> refs(std::begin(h225::kRefs), std::end(h225::kRefs));
    refs.insert(refs.end(), std::begin(h245::kRefs), std::end(h245::kRefs));
    for (const Ref* r : refs) {
        ASSERT_LT(r->index, r->owner->count) << r->name;
        EXPECT_STREQ(r->owner->components[r->index].name, r->name);
    }
}

}  // namespace
}  // namespace h323::per
