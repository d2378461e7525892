#include "platform/beacons/captures/wall_time.h"

#include <fmt/format.h>

#include <chrono>

namespace System::Beacon {

namespace {

using namespace std::chrono;

/// Takes a number of exactly `ADigits` digits and the mark behind it off the front of a text;
/// -1 when they are not there.
int TakeNumber(std::string_view& AText, std::size_t ADigits, char AMark) {
  if (AText.size() <= ADigits || AText[ADigits] != AMark) return -1;
  int Number = 0;
  for (const char Digit : AText.substr(0, ADigits)) {
    if (Digit < '0' || Digit > '9') return -1;
    Number = Number * 10 + (Digit - '0');
  }
  AText.remove_prefix(ADigits + 1);
  return Number;
}

/// The microseconds of "123456Z"; -1 when it is not one to six digits and the mark.
int TakeFraction(std::string_view& AText) {
  const std::size_t Digits = AText.find('Z');
  if (Digits == std::string_view::npos || Digits == 0 || Digits > 6) return -1;
  int Number = TakeNumber(AText, Digits, 'Z');
  for (std::size_t I = Digits; I < 6 && Number > 0; ++I) Number *= 10;
  return Number;
}

}  // namespace

std::string WallTimeToText(TTicks ATime) {
  const sys_time<microseconds> Time{microseconds(ATime)};
  const auto Day = floor<days>(Time);
  const year_month_day Date(Day);
  const hh_mm_ss Clock(Time - Day);
  return fmt::format("{:04}-{:02}-{:02}T{:02}:{:02}:{:02}.{:06}Z",
                     static_cast<int>(Date.year()),
                     static_cast<unsigned>(Date.month()),
                     static_cast<unsigned>(Date.day()),
                     Clock.hours().count(),
                     Clock.minutes().count(),
                     Clock.seconds().count(),
                     Clock.subseconds().count());
}

std::optional<TTicks> ParseWallTime(std::string_view AText) {
  const int Year = TakeNumber(AText, 4, '-');
  const int Month = TakeNumber(AText, 2, '-');
  const int Day = TakeNumber(AText, 2, 'T');
  const int Hour = TakeNumber(AText, 2, ':');
  const int Minute = TakeNumber(AText, 2, ':');
  const bool HasFraction = AText.size() > 2 && AText[2] == '.';
  const int Second = TakeNumber(AText, 2, HasFraction ? '.' : 'Z');
  const int Fraction = HasFraction ? TakeFraction(AText) : 0;
  const year_month_day Date{
      year(Year), month(static_cast<unsigned>(Month)), day(static_cast<unsigned>(Day))};
  const bool IsTime = Hour >= 0 && Hour < 24 && Minute >= 0 && Minute < 60 && Second >= 0 &&
                      Second < 60 && Fraction >= 0;
  if (Year < 0 || Month < 0 || Day < 0 || !Date.ok() || !IsTime || !AText.empty()) return {};
  const auto Time = sys_days(Date) + hours(Hour) + minutes(Minute) + seconds(Second);
  return duration_cast<microseconds>(Time.time_since_epoch()).count() + Fraction;
}

}  // namespace System::Beacon
