// Numbers as text where it is hardest: halfway between two doubles and between two last digits, and at the ends of the
// range. Needs nothing of the C library; fuzz/numbers.cpp compares with its printf and scanf.
#include <gtest/gtest.h>

#include <bit>
#include <cstdint>
#include <limits>
#include <random>
#include <string>

#include "io/text/number_format.h"
#include "io/text/number_scan.h"

namespace qel::gridwork::detail::io {
namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double largest = std::numeric_limits<double>::max();
constexpr double smallest = std::numeric_limits<double>::denorm_min();
constexpr double smallest_normal = std::numeric_limits<double>::min();

/// mantissa * 2^exponent in decimal digits, by doubling and halving them.
class exact_text {
 public:
  exact_text(std::uint64_t mantissa, int exponent) : digits_(std::to_string(mantissa)) {
    for (; exponent > 0; --exponent) add_digits_to_themselves();
    for (; exponent < 0; ++exponent) halve();
  }

  std::string text(const std::string& tail = "") const {
    return digits_.substr(0, whole()) + "." + digits_.substr(whole()) + tail;
  }

  /// Less by one in the last digit that is not 0.
  std::string text_below() const {
    std::string result = text();
    --result[result.find_last_not_of("0.")];
    return result;
  }

  /// With another point, made up for by an exponent.
  std::string text_scaled(int shift) const {
    return "0." + std::string(40, '0') + digits_ + "e" + std::to_string(static_cast<int>(whole()) + 40 + shift);
  }

 private:
  std::size_t whole() const { return digits_.size() - fraction_; }

  void add_digits_to_themselves() {
    int carry = 0;
    for (std::size_t k = digits_.size(); k-- > 0; carry /= 10) {
      carry += 2 * (digits_[k] - '0');
      digits_[k] = static_cast<char>('0' + carry % 10);
    }
    if (carry != 0) digits_.insert(digits_.begin(), '1');
  }

  void halve() {
    int rest = 0;
    for (char& digit : digits_) {
      const int value = 10 * rest + digit - '0';
      digit = static_cast<char>('0' + value / 2);
      rest = value % 2;
    }
    if (rest != 0) digits_ += '5', ++fraction_;
  }

  std::string digits_;
  std::size_t fraction_ = 0;
};

double scanned(const std::string& text) {
  double value = -1;
  const std::string with_margin = text + '\n' + std::string(scan_margin, '7');
  const char* const end = scan_number(with_margin.data(), value);
  EXPECT_EQ(end, with_margin.data() + text.size()) << text;
  double slower = -1;
  EXPECT_EQ(scan_double(with_margin.data(), slower), end) << text;
  EXPECT_EQ(slower, value) << text;
  return value;
}

/// The texts around the place halfway between mantissa * 2^exponent and the next double.
void check_halfway(std::uint64_t mantissa, int exponent, double below, double above) {
  const exact_text middle(2 * mantissa + 1, exponent - 1);
  const double even = mantissa % 2 == 0 ? below : above;
  EXPECT_EQ(scanned(middle.text()), even) << middle.text();
  EXPECT_EQ(scanned(middle.text(std::string(900, '0'))), even) << middle.text();
  EXPECT_EQ(scanned(middle.text_scaled(0)), even) << middle.text();
  EXPECT_EQ(scanned("-" + middle.text()), -even) << middle.text();
  for (const unsigned zeros : {0U, 5U, 1000U}) {
    EXPECT_EQ(scanned(middle.text(std::string(zeros, '0') + "1")), above) << middle.text();
  }
  EXPECT_EQ(scanned(middle.text_below()), below) << middle.text();
  EXPECT_EQ(scanned(middle.text_below() + "9999999999"), below) << middle.text();
}

TEST(scan_number, halfway_between_doubles) {
  constexpr std::uint64_t implied = std::uint64_t{1} << 52;
  check_halfway(0, -1074, 0, smallest);
  check_halfway(1, -1074, smallest, 2 * smallest);
  check_halfway(implied - 1, -1074, smallest_normal - smallest, smallest_normal);
  check_halfway(implied, -1074, smallest_normal, smallest_normal + smallest);
  check_halfway(2 * implied - 1, -1074, 2 * smallest_normal - smallest, 2 * smallest_normal);
  check_halfway(2 * implied - 1, 971, largest, infinity);
  check_halfway(implied, -52, 1, 0x1.0000000000001p+0);
  check_halfway(implied, 0, 0x1p52, 0x1.0000000000001p+52);
  std::mt19937_64 random(1);
  for (int k = 0; k < 400; ++k) {
    const auto value = std::bit_cast<double>(random() % 0x7fe0000000000000);
    const binary parts = split(value);
    check_halfway(parts.mantissa, parts.exponent, value,
                  std::bit_cast<double>(std::bit_cast<std::uint64_t>(value) + 1));
  }
}

TEST(scan_number, ends_of_the_range) {
  EXPECT_EQ(scanned("1e-323"), 2 * smallest);
  EXPECT_EQ(scanned("2.4703282292062327e-324"), 0);
  EXPECT_EQ(scanned("2.4703282292062328e-324"), smallest);
  EXPECT_EQ(scanned("1.7976931348623158e308"), largest);
  EXPECT_EQ(scanned("1.7976931348623159e308"), infinity);
  EXPECT_EQ(scanned("9999999999999999999e-343"), 0);
  EXPECT_EQ(scanned("0." + std::string(400, '0') + "1e401"), 1);
  EXPECT_EQ(scanned("1" + std::string(400, '0') + "e-400"), 1);
  EXPECT_EQ(scanned("0e999999999999"), 0);
  EXPECT_EQ(scanned("1e99999999999999999999"), infinity);
  EXPECT_EQ(scanned("1e-99999999999999999999"), 0);
}

TEST(scan_number, hexadecimal) {
  EXPECT_EQ(scanned("0x1.00000000000008p0"), 1);
  EXPECT_EQ(scanned("0x1.0000000000000800000000000000001p0"), 0x1.0000000000001p0);
  EXPECT_EQ(scanned("0x1.00000000000018p0"), 0x1.0000000000002p0);
  EXPECT_EQ(scanned("0x1.fffffffffffff7p1023"), largest);
  EXPECT_EQ(scanned("0x1.fffffffffffff8p1023"), infinity);
  EXPECT_EQ(scanned("0x0.00000000000008p-1022"), 0);
  EXPECT_EQ(scanned("0x0.00000000000008" + std::string(40, '0') + "1p-1022"), smallest);
  EXPECT_EQ(scanned("0x." + std::string(500, '0') + "8p2000"), 0.5);
  EXPECT_EQ(scanned("0x1p-99999999999"), 0);
  EXPECT_EQ(scanned("0x1p99999999999"), infinity);
}

std::string scientific(double value, unsigned digits) {
  char text[longest_scientific];
  return {text, format_scientific(text, value, digits)};
}

std::string fixed(double value) {
  char text[longest_fixed];
  return {text, format_fixed(text, value)};
}

TEST(format_scientific, ties_and_ends_of_the_range) {
  EXPECT_EQ(scientific(0.5, 0), "5e-01");
  EXPECT_EQ(scientific(2.5, 0), "2e+00");
  EXPECT_EQ(scientific(3.5, 0), "4e+00");
  EXPECT_EQ(scientific(9.5, 0), "1e+01");
  EXPECT_EQ(scientific(12345678.5, 7), "1.2345678e+07");
  EXPECT_EQ(scientific(12345677.5, 7), "1.2345678e+07");
  EXPECT_EQ(scientific(0x1p-20, 6), "9.536743e-07");
  EXPECT_EQ(scientific(1e23, 15), "9.999999999999999e+22");
  EXPECT_EQ(scientific(1e23, 16), "9.9999999999999992e+22");
  EXPECT_EQ(scientific(smallest, 17), "4.94065645841246544e-324");
  EXPECT_EQ(scientific(-largest, 17), "-1.79769313486231571e+308");
  EXPECT_EQ(scientific(smallest_normal, 16), "2.2250738585072014e-308");
}

TEST(format_fixed, every_size) {
  EXPECT_EQ(fixed(0.5e-6), "0.000000");
  EXPECT_EQ(fixed(0x1.8p-6), "0.023438");
  EXPECT_EQ(fixed(1999999999999.75), "1999999999999.750000");
  EXPECT_EQ(fixed(4398046511103.99951171875), "4398046511103.999512");
  EXPECT_EQ(fixed(-9007199254740991), "-9007199254740991.000000");
  EXPECT_EQ(fixed(1e23), "99999999999999991611392.000000");
  EXPECT_EQ(fixed(-largest),
            "-1797693134862315708145274237317043567980705675258449965989174768031572607800285387605895586327668781715"
            "404589535143824642343213268894641827684675467035375169860499105765512820762454900903893289440758685084"
            "55133942304583236903222948165808559332123348274797826204144723168738177180919299881250404026184124858368."
            "000000");
}

TEST(format_scientific, seventeen_digits_come_back) {
  std::mt19937_64 random(2);
  for (int k = 0; k < 100000; ++k) {
    const auto value = std::bit_cast<double>(random() % 0x7ff0000000000000);
    ASSERT_EQ(scanned(scientific(value, 16)), value);
  }
}

}  // namespace
}  // namespace qel::gridwork::detail::io
