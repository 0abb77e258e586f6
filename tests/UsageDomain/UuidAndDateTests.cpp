#include "UsageDomain/Date.h"
#include "UsageDomain/Uuid.h"

#include <gtest/gtest.h>

namespace gaugewell {
namespace {

TEST(Uuid, ParsesEitherCaseAndPrintsUpperCase) {
    const auto id = Uuid::parse("a115a6e0-337e-4f26-9809-6b2e75c39d01");
    ASSERT_TRUE(id);
    EXPECT_EQ(id->text(), "A115A6E0-337E-4F26-9809-6B2E75C39D01");
    for (const char* text :
         {"", "A115A6E0337E4F2698096B2E75C39D01", "A115A6E0-337E-4F26-9809-6B2E75C39D0",
          "A115A6E0-337E-4F26-9809-6B2E75C39D011", "G115A6E0-337E-4F26-9809-6B2E75C39D01",
          "A115A6E0+337E-4F26-9809-6B2E75C39D01", "{A115A6E0-337E-4F26-9809-6B2E75C39D}"}) {
        EXPECT_FALSE(Uuid::parse(text)) << text;
    }
}

TEST(Uuid, RandomIsVersionFourAndDistinct) {
    const auto text = Uuid::random().text();
    EXPECT_EQ(text[14], '4');
    EXPECT_NE(std::string("89AB").find(text[19]), std::string::npos);
    EXPECT_NE(text, Uuid::random().text());
}

TEST(Date, ReferenceDateSecondsSurviveTheTripThroughNanoseconds) {
    EXPECT_EQ(dateFromSecondsSinceReferenceDate(0).time_since_epoch(), std::chrono::seconds(978'307'200));
    for (const double seconds : {815'000'000.125, 815'000'000.001, -1.5, 0.000001, 1.0e9 + 0.3}) {
        EXPECT_EQ(secondsSinceReferenceDate(dateFromSecondsSinceReferenceDate(seconds)), seconds);
    }
}

TEST(Date, AddingSaturatesInsteadOfOverflowing) {
    const Date start = dateFromSecondsSinceReferenceDate(800'000'000);
    EXPECT_EQ(addingSeconds(start, 1e300), Date::max());
    EXPECT_EQ(addingSeconds(start, -1e300), Date::min());
    EXPECT_EQ(addingSeconds(start, 30) - start, std::chrono::seconds(30));
    EXPECT_EQ(addingSeconds(Date::max() - std::chrono::seconds(1), 10), Date::max());
}

} // namespace
} // namespace gaugewell
