// Numbers printed and scanned, as the C library does it. An input that begins with "|" is a list of texts to scan.
#include <cmath>
#include <memory>
#include <sstream>

#include "fuzz/input.h"
#include "io/text/number_format.h"
#include "io/text/number_scan.h"

namespace {

using namespace fuzz;
using std::string;
namespace io = qel::gridwork::detail::io;

// --- Printing ------------------------------------------------------------------------------------------------------

/// Compares what `format` appends with what printf prints.
template <class Format, class... Values>
void check_as(Format format, const char* theirs_format, Values... values) {
  char ours[io::longest_fixed + 8], theirs[400];
  std::memset(ours, '#', sizeof ours);
  const auto length = static_cast<std::size_t>(std::snprintf(theirs, sizeof theirs, theirs_format, values...));
  CHECK(format(ours) == ours + length && std::memcmp(ours, theirs, length) == 0);
  for (auto k = std::max<std::size_t>(io::longest_scientific, length); k < sizeof ours; ++k) CHECK(ours[k] == '#');
}

void check_printed(double value, unsigned any_digits) {
  for (const double x : {value, -value}) {
    for (const unsigned digits : {any_digits, 5U, 6U, 16U}) {
      check_as([=](char* out) { return io::format_scientific(out, x, digits); }, "%.*e", static_cast<int>(digits), x);
    }
    check_as([=](char* out) { return io::format_fixed(out, x); }, "%f", x);
    check_as([=](char* out) { return io::align_right(out, io::format_upper_scientific(out, x, 6), 16); }, "%16E", x);
    check_as([=](char* out) { return io::align_right(out, io::format_scientific(out, x, 5), 12); }, "%12.5e", x);
  }
}

/// An odd multiple of 2^-k has k digits behind the point, the last one a 5: with the right k an exact tie.
double tie(input& in, unsigned digits) {
  const unsigned leading = 1 + in.below(digits + 1);
  const int k = static_cast<int>(digits + 2) - static_cast<int>(leading);
  const double low = std::pow(10.0, leading - 1.0), high = std::min(10 * low, std::ldexp(1.0, 53 - k));
  const double unit = std::ldexp(1.0, -k), scale = static_cast<double>(in.raw<std::uint64_t>() >> 11) * 0x1p-53;
  return (2 * std::floor((low + std::max(high - low, 0.0) * scale) / (2 * unit)) + 1) * unit;
}

double number(input& in, unsigned digits) {
  static constexpr const char* borders[] = {"1", "9.999995", "9.9999995", "9.9999949999999", "4.99999950", "2.5"};
  const auto bits = in.raw<std::uint64_t>();
  const auto from_bits = [](std::uint64_t b) {
    double x;
    std::memcpy(&x, &b, sizeof x);
    return x;
  };
  const double whole = static_cast<double>(bits >> (24 + in.below(40)));
  switch (in.below(9)) {
    case 0:
      return from_bits(bits);
    case 1:  // denormals
      return from_bits(bits & ((std::uint64_t{1} << (1 + in.below(52))) - 1));
    case 2:
      return std::ldexp(static_cast<double>(bits % 2000001) - 1000000, static_cast<int>(in.below(40)) - 20);
    case 3:
      return static_cast<double>(bits % 100000000) / std::pow(10.0, in.below(12));
    case 4:  // a tie in millionths
      return (2 * whole + 1) / 128;
    case 5:  // near a half of a millionth
      return (whole + 0.5) * (in.flag() ? 1e-6 : in.flag() ? 1e-9 : 1e3);
    case 6:
      return std::strtod((borders[in.below(6)] + ("e" + std::to_string(int(bits % 633) - 324))).c_str(), nullptr);
    case 7:
      return in.real();
    default:
      return tie(in, digits);
  }
}

void check_integer(std::int64_t value) {
  check_as([=](char* out) { return io::format_integer(out, value); }, "%lld", static_cast<long long>(value));
  check_as([=](char* out) { return io::format_integer(out, value, 8); }, "%8lld", static_cast<long long>(value));
}

// --- Scanning ------------------------------------------------------------------------------------------------------

bool same_number(double a, double b) {
  return std::isnan(a) || std::isnan(b) ? std::isnan(a) && std::isnan(b) && std::signbit(a) == std::signbit(b)
                                        : std::memcmp(&a, &b, sizeof a) == 0;
}

/// Compares with sscanf, on a copy of exactly the text's size so that reading on is seen.
void check_scanned(const string& text) {
  double value = 1.25, expected = 1.25;
  int length = 0;
  const bool found = std::sscanf(text.c_str(), "%lg%n", &expected, &length) == 1;
  for (const char last : {'\0', '\n'}) {
    const std::unique_ptr<char[]> copy(new char[text.size() + 1]);
    std::memcpy(copy.get(), text.data(), text.size());
    copy[text.size()] = last;
    const char* const end = io::scan_double(copy.get(), value);
    CHECK((end != nullptr) == found && io::skip_double(copy.get()) == end);
    double faster = 1.25;
    const string more = text + last + string(io::scan_margin, '7');
    const char* const faster_end = io::scan_number(more.data(), faster);
    CHECK(faster_end == io::skip_number(more.data()) && (faster_end == nullptr) == (end == nullptr));
    if (!found) continue;
    CHECK(faster_end - more.data() == end - copy.get() && same_number(faster, value));
    CHECK(end - copy.get() == length && same_number(value, expected));
  }
}

/// Letters, words and long runs of a digit, as they are found in numbers.
string words(input& in) {
  static const string letters = "0123456789.eE+-infINFNAnaxX()pP \t";
  static constexpr const char* pieces[] = {"0x",  "0X",  "inf",   "INF",   "nan",  "inity",     "nan(",
                                           "e+",  "e-",  "00000", "1e",    "p-",   "123456789", "30",
                                           "308", "324", "0x1.",  "e-300", "e320", "p-6900",    "17976931348623157"};
  static constexpr unsigned lengths[] = {10, 19, 20, 39, 300, 800, 2000, 5000};
  string text;
  for (unsigned n = in.below(10); n > 0; --n) {
    const unsigned kind = in.below(8);
    if (kind < 4) text += letters[in.below(static_cast<unsigned>(letters.size()))];
    if (kind >= 4)
      text += kind < 7 ? pieces[in.below(std::size(pieces))] : string(lengths[in.below(8)], "0159"[in.below(4)]);
  }
  return text;
}

/// A number printed; or the place halfway between two numbers, or a hair beside it.
string printed(input& in, double value) {
  static constexpr const char* formats[] = {"%.17g", "%.6e", "%a", "%.25e", "%.15f", "%.9g", "%.3f"};
  char text[800];
  if (in.flag()) {
    std::snprintf(text, sizeof text, formats[in.below(7)], in.flag() ? value : std::remainder(value, 1e9));
    return text;
  }
  const auto mantissa = static_cast<double>(in.raw<std::uint64_t>() >> 12) * 0x1p-52;
  const double low = std::ldexp(1 + mantissa, static_cast<int>(in.below(120)) - 60);
  std::snprintf(text, sizeof text, "%.150Lf", (static_cast<long double>(low) + std::nextafter(low, 1e300)) / 2);
  string result = text;
  if (in.flag()) return in.flag() ? result : result + "1";
  if (in.flag()) result[result.find_last_not_of('0')] -= 1;
  return result;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size != 0 && data[0] == '|') {
    std::istringstream forms(string(reinterpret_cast<const char*>(data) + 1, size - 1));
    for (string text; std::getline(forms, text, '|');) {
      text.resize(std::min(text.find_first_of(string("\n\0", 2)), text.size()));
      for (const char* tail : {"", "e5", "."}) check_scanned(text + tail);
    }
    return 0;
  }
  input in(data, size);
  for (unsigned k = 0; k < 40 && !in.ended(); ++k) {
    const unsigned digits = in.below(18);
    const double x = number(in, digits);
    for (const double value : {x, std::nextafter(x, 0.0), std::nextafter(x, random_meshes::infinity)}) {
      check_printed(value, digits);
    }
    const auto power = static_cast<std::int64_t>(std::pow(10.0, in.below(19)));
    for (const std::int64_t d : {-1, 0, 1}) check_integer(power + d), check_integer(-power + d);
    check_integer(in.raw<std::int64_t>() >> in.below(64)), check_integer(std::numeric_limits<std::int64_t>::min());
    check_scanned(words(in)), check_scanned(printed(in, x));
  }
  return 0;
}
