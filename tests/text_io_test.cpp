// Numbers printed and scanned, and lines cut, as the C library does it.
#include <gtest/gtest.h>

#include <memory>
#include <sstream>

#include "io/block_reader.h"
#include "io/line_reader.h"
#include "io/number_format.h"
#include "io/number_scan.h"
#include "tests/random_meshes.h"

namespace {

namespace io = qel::gridwork::io;

double from_bits(std::uint64_t bits) {
  double value;
  std::memcpy(&value, &bits, sizeof value);
  return value;
}

bool same_number(double a, double b) {
  return std::isnan(a) || std::isnan(b) ? std::isnan(a) && std::isnan(b) && std::signbit(a) == std::signbit(b)
                                        : std::memcmp(&a, &b, sizeof a) == 0;
}

class number_format : public ::testing::Test {
 protected:
  /// Compares what `format` appends with what printf prints.
  template <class Format, class... Values>
  static void check_as(Format format, const char* theirs_format, Values... values) {
    char ours[io::longest_fixed + 8], theirs[400];
    std::memset(ours, '#', sizeof ours);
    const std::ptrdiff_t length = std::snprintf(theirs, sizeof theirs, theirs_format, values...);
    const std::ptrdiff_t ours_length = format(ours) - ours;
    ASSERT_TRUE(ours_length == length && std::memcmp(ours, theirs, length) == 0)
        << std::string(ours, sizeof ours) << " for " << theirs;
    for (auto k = std::max<std::size_t>(io::longest_scientific, length); k < sizeof ours; ++k) {
      ASSERT_EQ(ours[k], '#') << theirs;
    }
  }

  static void check(double value, unsigned digits) {
    const int precision = static_cast<int>(digits);
    check_as([=](char* out) { return io::format_scientific(out, value, digits); }, "%.*e", precision, value);
  }

  /// Both signs of a value, "%f" and the wide fields.
  static void check_fields(double value) {
    for (const double x : {value, -value}) {
      check_as([=](char* out) { return io::format_fixed(out, x); }, "%f", x);
      check_as([=](char* out) { return io::align_right(out, io::format_upper_scientific(out, x, 6), 16); }, "%16E", x);
      check_as([=](char* out) { return io::align_right(out, io::format_scientific(out, x, 5), 12); }, "%12.5e", x);
    }
  }

  /// Both signs, with the digits that the formats use.
  static void check(double value) {
    for (const unsigned digits : {5U, 6U, 16U}) {
      check(value, digits);
      check(-value, digits);
    }
  }
};

TEST_F(number_format, special_values_and_borders) {
  using limits = std::numeric_limits<double>;
  std::istringstream values(
      "0 1 0.5 1.5 2.5 9.5 0.1 0.3333333333333333 9.9999995 9.99999949999999 9.999995 99999.95 1e22 1e23 5e-324 "
      "4503599627370496.5 9007199254740993 1234567.5 1.7976931348623157e308 2.2250738585072014e-308 inf nan");
  for (std::string text; values >> text;) {
    const double value = std::strtod(text.c_str(), nullptr);
    for (unsigned digits = 0; digits <= 17; ++digits) {
      check(value, digits);
      check(-value, digits);
    }
    check_fields(value);
  }
  for (int exponent = -324; exponent <= 308; ++exponent) {
    for (const char* mantissa : {"1", "9.999995", "9.9999995", "9.9999949999999", "4.99999950", "2.5"}) {
      const double power = std::strtod((mantissa + ("e" + std::to_string(exponent))).c_str(), nullptr);
      check(power);
      check_fields(power);
      check(std::nextafter(power, 0.0));
      check(std::nextafter(power, limits::infinity()));
    }
  }
  for (unsigned k = 0; k < 64; ++k) {  // around every power of two among the denormals
    for (std::uint64_t d = 0; d < 5; ++d) check(from_bits((std::uint64_t{1} << (k % 52)) + d - 2));
  }
}

TEST_F(number_format, random_values_and_ties) {
  std::mt19937_64 random(1);
  for (unsigned run = 0; run < 150000 && !HasFatalFailure(); ++run) {
    check(from_bits(random()));
    check(std::ldexp(static_cast<double>(random() % 2000001) - 1000000, static_cast<int>(random() % 40) - 20));
    check(static_cast<double>(random() % 100000000) / std::pow(10.0, static_cast<double>(random() % 12)));
    check(from_bits(random() & ((std::uint64_t{1} << (1 + random() % 52)) - 1)));  // denormals
  }
  // An odd multiple of 2^-k has k digits behind the point, the last one a 5: with the right k an exact tie.
  for (unsigned run = 0; run < 200000 && !HasFatalFailure(); ++run) {
    const unsigned digits = run % 17, leading = 1 + static_cast<unsigned>(random() % (digits + 1));
    const int k = static_cast<int>(digits + 2) - static_cast<int>(leading);
    const double low = std::pow(10.0, leading - 1.0), high = std::min(10 * low, std::ldexp(1.0, 53 - k));
    if (low >= high) continue;
    const double unit = std::ldexp(1.0, -k), scale = static_cast<double>(random() >> 11) * 0x1p-53;
    const double tie = (2 * std::floor((low + (high - low) * scale) / (2 * unit)) + 1) * unit;
    check(tie, digits);
    check(std::nextafter(tie, 0.0), digits);
    check(std::nextafter(tie, 1e300), digits);
  }
}

TEST_F(number_format, fixed_ties) {
  std::mt19937_64 random(4);
  for (unsigned run = 0; run < 60000 && !HasFatalFailure(); ++run) {
    // An odd number of 2^-7 is a tie in millionths; below 2^-7 no tie is exact, but neighbours of halves are close.
    const double tie = static_cast<double>(2 * (random() >> (24 + random() % 40)) + 1) / 128;
    const double half = (std::floor(static_cast<double>(random() >> (20 + random() % 44))) + 0.5) / 1e6;
    for (const double value : {tie, half, half * 1e-3, half * 1e9}) {
      check_fields(value);
      check_fields(std::nextafter(value, 0.0));
      check_fields(std::nextafter(value, 1e300));
    }
  }
}

TEST_F(number_format, integers) {
  const auto check_integer = [](std::int64_t value) {
    check_as([=](char* out) { return io::format_integer(out, value); }, "%lld", static_cast<long long>(value));
    check_as([=](char* out) { return io::format_integer(out, value, 8); }, "%8lld", static_cast<long long>(value));
  };
  std::mt19937_64 random(5);
  std::int64_t power = 1;
  for (unsigned digits = 1; digits < 19; ++digits, power *= 10) {
    for (const std::int64_t d : {-1, 0, 1}) check_integer(power + d), check_integer(-power + d);
  }
  for (const auto value : {std::numeric_limits<std::int64_t>::min(), std::numeric_limits<std::int64_t>::max()}) {
    check_integer(value);
  }
  for (unsigned run = 0; run < 100000; ++run) check_integer(static_cast<std::int64_t>(random() >> (random() % 64)));
}

class number_scan : public ::testing::Test {
 protected:
  /// Compares with sscanf, on a copy of exactly the text's size so that reading on is seen.
  static bool check(const std::string& text) {
    double value = 1.25, expected = 1.25;
    int length = 0;
    const bool found = std::sscanf(text.c_str(), "%lg%n", &expected, &length) == 1;
    for (const char last : {'\0', '\n'}) {
      const std::unique_ptr<char[]> copy(new char[text.size() + 1]);
      std::memcpy(copy.get(), text.data(), text.size());
      copy[text.size()] = last;
      const char* const end = io::scan_double(copy.get(), value);
      EXPECT_EQ(end != nullptr, found) << '"' << text << '"';
      EXPECT_EQ(io::skip_double(copy.get()), end) << '"' << text << '"';
      double faster = 1.25;
      const std::string more = text + last + std::string(io::scan_margin, '7');
      const char* const faster_end = io::scan_number(more.data(), faster);
      EXPECT_TRUE(faster_end == io::skip_number(more.data()) && (faster_end == nullptr) == (end == nullptr)) << text;
      EXPECT_TRUE(end == nullptr || (faster_end - more.data() == end - copy.get() && same_number(faster, value)))
          << text;
      if (end == nullptr || !found) continue;
      EXPECT_EQ(end - copy.get(), length) << '"' << text << '"';
      EXPECT_TRUE(same_number(value, expected)) << '"' << text << "\": " << value << " for " << expected;
    }
    return found;
  }
};

TEST_F(number_scan, special_forms) {
  std::istringstream forms(
      "|  |\t\v\f\r 7|+|-|+-1|- 1|.|-.|+.e1|1.|.5|-.5e1|1e|1e+|1e-|1e+ 2|1E5x|1e5e5|1.2.3|00012|0e|1e5-2|3.4e+0005|"
      "1e+-5|0x|0X|0x |0xp1|0x.|0x.p1|0x.8p1|0x1p|0x1p-|0x1.p+3|0xfFp0|-0x0|x|0y|1f|1L|one|_1|1-2|1+2|1,5|1_000|"
      "\xa0\x31|1\xa0|0x1.fffffffffffff8p0|0x1.fffffffffffff7p0|0x1.fffffffffffffp1023|0x1.fffffffffffff8p1023|"
      "0x1p-1074|0x1p-1075|0x1.8p-1074|0x0.0000000000001p-1022|0x1p99999999999999999999|0x1p-99999999999999999999|"
      "0x123456789abcdef123456789p-40|i|in|inf|INF|-Inf|infi|infin|infinit|infinity|InFiNiTyx|infx|inf1|n|na|nan|-nan|"
      "+NaN|nanx|nan(|nan()|nan(1)|nan(x_1)|nan (1)|1e999|-1e999|1e-999|-1e-999|0e999|1e-324|2.4703282292062327e-324|"
      "2.4703282292062328e-324|4.9e-324|2.2250738585072011e-308|1.7976931348623158e308|1.7976931348623159e308|"
      "1e2147483648|1e-2147483649|1e18446744073709551617|9007199254740993|9007199254740992.99999999999999999999|"
      "9007199254740993.00000000000000000000000000000000001|1e22|1e23|123456789012345678901234567890e-20|--1|++1|"
      "0.500000000000000166533453693773481063544750213623046875");
  for (std::string text; std::getline(forms, text, '|');) {
    check(text);
    for (const char* tail : {" ", ".", "e", "e5", "-1", "0", "x", "(", "nan"}) check(text + tail);
  }
  for (const unsigned length : {10U, 19U, 20U, 39U, 300U, 800U, 2000U, 5000U}) {
    for (const char digit : {'0', '1', '9', '5'}) {
      std::istringstream long_forms(
          "@ 1@ @.5 0.@ 0.@7 1.@1 1@e-300 0.@1e320 1e@ 1e-@ @e-5000 1@e-1670 0.@1e1670 "
          "0x@ 0x1.@p5 0x1@p-6900 0x.@1p6900 0x1@p-9100 0x.@1p8960");
      for (std::string text; long_forms >> text;) check(text.replace(text.find('@'), 1, std::string(length, digit)));
    }
  }
}

TEST_F(number_scan, random_strings_and_printed_numbers) {
  const std::string letters = "0123456789.eE+-infINFNAnaxX()pP \t";
  std::istringstream words(
      "0x 0X inf INF nan inity e+ e- e p p- . 0 00000 1 9999999 123456789 - + 30 308 324 abcdef 17976931348623157");
  const std::vector<std::string> pieces(std::istream_iterator<std::string>(words), {});
  std::mt19937_64 random(2);
  unsigned numbers = 0;
  for (unsigned run = 0; run < 200000 && !HasFailure(); ++run) {
    std::string text;
    for (std::uint64_t n = random() % 12; n-- != 0;) text += letters[random() % letters.size()];
    numbers += check(text);
    text.clear();
    for (std::uint64_t n = 1 + random() % 6; n-- != 0;) text += pieces[random() % std::size(pieces)];
    numbers += check(text);
    char printed[400];
    const double value = from_bits(random());
    const char* const formats[] = {"%.17g", "%.6e", "%a", "%.25e", "%.15f", "%.9g", "%.3f"};
    std::snprintf(printed, sizeof printed, formats[run % 7], run % 2 == 0 ? value : std::remainder(value, 1e9));
    numbers += check(printed);
  }
  EXPECT_GT(numbers, 250000U);
  // Halfway between two neighbours, and a hair beside it.
  for (unsigned run = 0; run < 3000 && !HasFailure(); ++run) {
    const double low =
        std::ldexp(1 + static_cast<double>(random() >> 12) * 0x1p-52, static_cast<int>(random() % 120) - 60);
    char printed[400];
    std::snprintf(printed, sizeof printed, "%.150Lf", (static_cast<long double>(low) + std::nextafter(low, 1e300)) / 2);
    std::string text = printed;
    check(text);
    check(text + "1");
    text[text.find_last_not_of('0')] -= 1;
    check(text);
  }
}

TEST(line_reader, cuts_lines_as_fgets_does) {
  std::string text;
  std::mt19937 random(3);
  while (text.size() < 1500000) {  // several blocks
    const unsigned n = random() % 3 == 0 ? 240 + random() % 30 : random() % 600;
    for (unsigned k = 0; k < n; ++k) text += random() % 500 == 0 ? '\0' : static_cast<char>(' ' + random() % 90);
    text += random() % 20 == 0 ? "\n\n" : "\r\n";
  }
  for (const unsigned cut : {0U, 1U, 2U, 700U, 1000000U, unsigned(text.size())}) {
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::tmpfile(), std::fclose);
    ASSERT_TRUE(file);
    std::fwrite(text.data(), 1, text.size() - cut, file.get());
    std::vector<std::string> expected;
    std::rewind(file.get());
    for (char line[256]; std::fgets(line, sizeof line, file.get()) != nullptr;) expected.push_back(line);
    std::rewind(file.get());
    io::block_reader blocks(file.get());
    ASSERT_TRUE(blocks.prepare());
    io::line_reader lines(blocks);
    std::size_t count = 0;
    for (const char* line; (line = lines.next()) != nullptr; ++count) {
      ASSERT_LT(count, expected.size());
      const std::string& wanted = expected[count];
      const std::size_t length = std::strcspn(wanted.c_str(), "\n");
      ASSERT_TRUE(std::memcmp(line, wanted.data(), length) == 0 && (line[length] == '\0' || line[length] == '\n'))
          << count;
      ASSERT_TRUE(wanted[length] != '\n' || line[length] == '\n') << count;
    }
    EXPECT_EQ(count, expected.size());
    EXPECT_EQ(blocks.position(), text.size() - cut);
  }
}

}  // namespace
