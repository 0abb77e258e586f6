#include "UsageDomain/JsonValue.h"

#include <gtest/gtest.h>

namespace gaugewell {
namespace {

JsonValue parsed(std::string_view text) {
    auto result = parseJson(text);
    EXPECT_TRUE(result.hasValue()) << text;
    return result ? result.value() : JsonValue();
}

TEST(JsonValue, KeepsNumberLiteralsExactly) {
    const auto json = parsed(R"({"a": 41.50, "b": 1E2, "c": -0, "d": 123456789012345678901234567890})");
    EXPECT_EQ(*json.find("a")->numberLiteralText(), "41.50");
    EXPECT_EQ(json.find("a")->decimalValue()->text(), "41.5");
    EXPECT_EQ(json.find("b")->int64Value(), 100);
    EXPECT_EQ(json.find("c")->int64Value(), 0);
    EXPECT_EQ(json.find("d")->decimalValue()->text(), "123456789012345678901234567890");
    EXPECT_FALSE(json.find("d")->int64Value().has_value());
}

TEST(JsonValue, ParsesEveryKindOfValueAtTheRoot) {
    EXPECT_EQ(parsed("null").type(), JsonValue::Type::null);
    EXPECT_EQ(parsed(" true ").boolValue(), true);
    EXPECT_EQ(parsed("false").boolValue(), false);
    EXPECT_EQ(parsed("7").int64Value(), 7);
    EXPECT_EQ(*parsed(R"("a\u00e9\n")").stringValue(), "a\xc3\xa9\n");
    EXPECT_EQ(parsed("[]").arrayValue()->size(), 0u);
    EXPECT_EQ(parsed("{}").objectValue()->size(), 0u);
}

TEST(JsonValue, RejectsMalformedInput) {
    for (const char* text :
         {"",    " ",       "{",           "[1,]",    "{\"a\":1,}", "{\"a\" 1}",      "[1 2]",      "01",
          "1.",  "+1",      "tru",         "nul",     "NaN",        "\"unterminated", "{\"a\":1}x", "[] []",
          "1 2", "\"\\x\"", "\"\\ud800\"", "{'a':1}", "[1]]",       "{\"a\":\"\t\"}"}) {
        EXPECT_FALSE(parseJson(text).hasValue()) << text;
    }
}

TEST(JsonValue, RejectsInvalidUtf8) {
    EXPECT_FALSE(parseJson("\"\xff\"").hasValue());
    EXPECT_FALSE(parseJson("\"\xc3\"").hasValue());
    EXPECT_FALSE(parseJson("{\"\xed\xa0\x80\":1}").hasValue());
}

TEST(JsonValue, RejectsNestingBeyondTheLimit) {
    const std::string deep = std::string(100'000, '[') + std::string(100'000, ']');
    EXPECT_FALSE(parseJson(deep).hasValue());
    const std::string fine = std::string(100, '[') + std::string(100, ']');
    EXPECT_TRUE(parseJson(fine).hasValue());
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
}

TEST(JsonValue, SerializedTextParsesBackToTheSameTree) {
    const char* text = R"({"k":[1,2.50,{"n":null,"s":"\u0001\\\""}],"e":1e-7,"b":false})";
    const auto once = parsed(text);
    EXPECT_EQ(parsed(once.serialized()), once);
}

TEST(JsonValue, DoublesAreWrittenShortestAndWithoutExponentsForOrdinaryMagnitudes) {
    EXPECT_EQ(JsonValue::number(800000000.0).serialized(), "800000000");
    EXPECT_EQ(JsonValue::number(817084800.25).serialized(), "817084800.25");
    EXPECT_EQ(JsonValue::number(-0.5).serialized(), "-0.5");
    EXPECT_EQ(JsonValue::number(0.0).serialized(), "0");
    EXPECT_EQ(JsonValue::number(1e-7).serialized(), "1e-07");
    EXPECT_EQ(JsonValue::number(1e22).serialized(), "1e+22");
    for (const double value : {0.1, 1.0 / 3, 123456789.123456789, 1e-6, 9.99e20}) {
        EXPECT_EQ(parseJson(JsonValue::number(value).serialized())->doubleValue(), value);
    }
}

TEST(JsonValue, NonFiniteDoublesBecomeNull) {
    EXPECT_TRUE(JsonValue::number(std::numeric_limits<double>::infinity()).isNull());
    EXPECT_TRUE(JsonValue::number(std::numeric_limits<double>::quiet_NaN()).isNull());
}

} // namespace
} // namespace gaugewell
