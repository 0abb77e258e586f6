#include "UsageDomain/JsonValue.h"

#include <gtest/gtest.h>

namespace gaugewell {
namespace {

JsonValue parsed(std::string_view text) {
    auto result = parseJson(text);
    EXPECT_TRUE(result) << text;
    return result ? result.value() : JsonValue();
}

TEST(JsonValue, KeepsNumberLiteralsExactly) {
    const auto json = parsed(R"({"a": 41.50, "b": 1E2, "c": -0, "d": 123456789012345678901234567890})");
    EXPECT_EQ(*json.find("a")->numberLiteralText(), "41.50");
    EXPECT_EQ(json.find("a")->decimalValue()->text(), "41.5");
    EXPECT_EQ(json.find("b")->int64Value(), 100);
    EXPECT_EQ(json.find("c")->int64Value(), 0);
    EXPECT_EQ(json.find("d")->decimalValue()->text(), "123456789012345678901234567890");
    EXPECT_EQ(json.find("d")->int64Value(), std::nullopt);
}

TEST(JsonValue, RejectsWhatIsNotExactlyOneValidDocument) {
    for (const char* text : {"", "{", "[1,]", "01", "NaN", "{\"a\":1}x", "[] []", "1 2", "\"\\ud800\"",
                             "\"\xff\"", "{\"\xed\xa0\x80\":1}"}) {
        EXPECT_FALSE(parseJson(text)) << text;
    }
}

TEST(JsonValue, RejectsNestingBeyondTheLimit) {
    EXPECT_FALSE(parseJson(std::string(100'000, '[') + std::string(100'000, ']')));
    EXPECT_TRUE(parseJson(std::string(100, '[') + std::string(100, ']')));
}

TEST(JsonValue, LastDuplicateKeyWins) {
    EXPECT_EQ(parsed(R"({"a":1,"a":2})").find("a")->int64Value(), 2);
}

TEST(JsonValue, SerializesCompactlyInKeyOrderWithSlashesUnescaped) {
    const JsonValue value(JsonValue::Object{
        {"z", JsonValue("https://example.invalid/a")},
        {"a", JsonValue(JsonValue::Array{JsonValue::number(std::int64_t{-3}), JsonValue(true), JsonValue()})},
        {"q", JsonValue("quote\" back\\ tab\t nul\x01 é")},
        {"d", JsonValue::number(0.1)},
    });
    EXPECT_EQ(
        value.serialized(),
        R"({"z":"https://example.invalid/a","a":[-3,true,null],"q":"quote\" back\\ tab\t nul\u0001 é","d":0.1})");
    EXPECT_EQ(parsed(value.serialized()), value);
}

TEST(JsonValue, DoublesAreWrittenShortestAndNonFiniteOnesAsNull) {
    EXPECT_EQ(JsonValue::number(800000000.0).serialized(), "800000000");
    EXPECT_EQ(JsonValue::number(817084800.25).serialized(), "817084800.25");
    EXPECT_EQ(JsonValue::number(1e-7).serialized(), "1e-07");
    for (const double value : {0.1, 1.0 / 3, 123456789.123456789, 9.99e20}) {
        EXPECT_EQ(parseJson(JsonValue::number(value).serialized())->doubleValue(), value);
    }
    EXPECT_TRUE(JsonValue::number(std::numeric_limits<double>::infinity()).isNull());
    EXPECT_TRUE(JsonValue::number(std::numeric_limits<double>::quiet_NaN()).isNull());
}

} // namespace
} // namespace gaugewell
