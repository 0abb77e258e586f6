#include "UsageDomain/Decimal.h"

#include <gtest/gtest.h>

namespace gaugewell {
namespace {

Decimal parsed(std::string_view text) {
    const auto value = Decimal::parse(text);
    EXPECT_TRUE(value.has_value()) << text;
    return value.value_or(Decimal());
}

TEST(Decimal, PercentDividedByHundredIsExactAndPrintsPlainPositionalText) {
    EXPECT_EQ(parsed("41.5").dividedBy100().text(), "0.415");
    EXPECT_EQ(parsed("100").dividedBy100(), Decimal(1));
    EXPECT_EQ(Decimal(0).dividedBy100(), Decimal(0));
    for (const auto& [literal, text] : std::vector<std::pair<std::string, std::string>>{
             {"-12", "-12"}, {"1.2e3", "1200"}, {"5E-3", "0.005"}, {"0.000", "0"}}) {
        EXPECT_EQ(parsed(literal).text(), text);
    }
}

TEST(Decimal, ComparesAndHashesByValue) {
    EXPECT_GT(parsed("100.01"), Decimal(100));
    EXPECT_LT(parsed("99.999999999999999999999999"), Decimal(100));
    EXPECT_EQ(parsed("1.50"), parsed("1.5"));
    EXPECT_EQ(parsed("-0"), Decimal(0));
    EXPECT_LT(parsed("-2"), parsed("-1.5"));
    EXPECT_LT(parsed("-0.001"), Decimal(0));
    EXPECT_LT(parsed("9"), parsed("10"));
    EXPECT_EQ(std::hash<Decimal>{}(parsed("1.50")), std::hash<Decimal>{}(parsed("1.5")));
    EXPECT_EQ(std::hash<Decimal>{}(parsed("100")), std::hash<Decimal>{}(parsed("1E2")));
}

TEST(Decimal, KeepsThirtyEightSignificantDigits) {
    const std::string digits = "12345678901234567890123456789012345678";
    EXPECT_EQ(parsed(digits).text(), digits);
    EXPECT_EQ(parsed("0." + digits).text(), "0." + digits);
    EXPECT_EQ(parsed(digits + "000").text(), digits + "000"); // trailing zeros cost nothing
    EXPECT_FALSE(Decimal::parse(digits + "9").has_value());   // a 39th significant digit is not exact
    EXPECT_FALSE(Decimal::parse("0." + digits + "1").has_value());
}

TEST(Decimal, RejectsWhatIsNotAJsonNumber) {
    for (const char* text : {"", "-", "+1", "01", "1.", ".5", "1e", "1e+", "0x10", "1,5", " 1", "1 ", "NaN",
                             "Infinity", "--1", "1.5.2", "1e5e5"}) {
        EXPECT_FALSE(Decimal::parse(text).has_value()) << text;
    }
}

TEST(Decimal, RejectsExponentsOutOfRange) {
    EXPECT_FALSE(Decimal::parse("1e200").has_value());
    EXPECT_FALSE(Decimal::parse("1e-200").has_value());
    EXPECT_FALSE(Decimal::parse("1e99999999999999999999").has_value());
    EXPECT_TRUE(Decimal::parse("1e127").has_value());
    EXPECT_EQ(parsed("0e99999"), Decimal(0)); // zero has no magnitude to overflow
}

TEST(Decimal, ConvertsToNearestDouble) {
    EXPECT_DOUBLE_EQ(parsed("0.415").toDouble(), 0.415);
    EXPECT_EQ(parsed("0.1").toDouble(), 0.1);
    EXPECT_EQ(parsed("-2.5e3").toDouble(), -2500.0);
}

TEST(Decimal, Int64OnlyForWholeValuesInRange) {
    EXPECT_EQ(parsed("42").int64Value(), 42);
    EXPECT_EQ(parsed("42.0").int64Value(), 42);
    EXPECT_EQ(parsed("4.2e1").int64Value(), 42);
    EXPECT_EQ(parsed("-9223372036854775808").int64Value(), INT64_MIN);
    EXPECT_EQ(parsed("9223372036854775807").int64Value(), INT64_MAX);
    EXPECT_FALSE(parsed("9223372036854775808").int64Value().has_value());
    EXPECT_FALSE(parsed("42.5").int64Value().has_value());
    EXPECT_FALSE(parsed("1e30").int64Value().has_value());
}

} // namespace
} // namespace gaugewell
