// Dates in replies: as text, in each form that the service uses, and as a number. The first line is a text, the second
// a number of seconds.

#include "fuzz.h"
#include "models/date_text.h"

#include <kavio/platform/platform.h>
#include <kavio/testing/device.h>

#include <cmath>

namespace kavio::fuzz {
namespace {

using std::chrono::sys_days;
using namespace std::chrono_literals;

const DateFormat posix{"yyyy-MM-dd'T'HH:mm:ss.SSS", "en_US_POSIX", "UTC"};
const DateFormat local{"yyyy-MM-dd'T'HH:mm:ss.SSS", std::nullopt, "UTC"};
const DateFormat whole{"yyyy-MM-dd'T'HH:mm:ss", "en_US_POSIX", "UTC"};
const DateFormat offset{"yyyy-MM-dd'T'HH:mm:ss.SSSZ", std::nullopt, std::nullopt};

bool isOrdinary(Date date) { return date >= Date(sys_days(1583y / 1 / 1)) && date < Date(sys_days(10000y / 1 / 1)); }

void write(Date date) {
    const auto text = DateText::format(date);
    const auto stamp = DateText::stamp(date);
    const auto debug = DateText::debug(date);
    if (!isOrdinary(date)) return must(text.size() + stamp.size() + debug.size() < 200, "a date's text is short");
    must(stamp.size() == 14 && debug.size() == 25, "an ordinary date's texts have one length");
    const auto read = DateText::parse(text);
    must(read && std::abs((date - *read).count()) < 0.002, "a date is kept to the millisecond");
    must(DateText::format(*read) == text, "a date that was read is written the same");
}

}  // namespace

void tryInput(Input input) {
    static const test::Device device;
    const auto& formatter = *Platform::current().dateFormatter;
    const auto text = input.line();
    for (const auto& [read, format] : {std::pair{&DateText::parse, &posix},
                                       {&DateText::parseLocalized, &local},
                                       {&DateText::parseSeconds, &whole},
                                       {&DateText::parseWithOffset, &offset}}) {
        const auto date = read(text);
        must(date == formatter.parse(*format, text), "a text means what the platform says that it means");
        if (date) write(*date);
    }
    write(Date(Date::duration(std::strtod(input.line().c_str(), nullptr))));
}

}  // namespace kavio::fuzz
