#include "simulator/animation.h"

#include <cmath>
#include <cstring>

namespace vssim {

namespace {

constexpr std::uint32_t RAMP_LENGTH = 1000;
constexpr std::uint32_t STEPS_PER_TURN = 60;
constexpr double AMPLITUDE = 1000;
constexpr double PI = 3.14159265358979323846;
constexpr unsigned BLINKING_BITS = 8;
constexpr std::uint32_t TIMER_LENGTH = 100;

double sine(std::uint32_t step) { return std::sin(2 * PI * (step % STEPS_PER_TURN) / STEPS_PER_TURN); }

std::uint32_t floatBits(double value)
{
    const auto single = static_cast<float>(value);
    std::uint32_t bits = 0;
    static_assert(sizeof(bits) == sizeof(single), "a float takes two words");
    std::memcpy(&bits, &single, sizeof(bits));
    return bits;
}

} // namespace

void Animation::step()
{
    ++m_steps;
    for (const std::uint8_t station : m_controller.stations())
        stepStation(station);
}

void Animation::stepStation(std::uint8_t station)
{
    const auto set = [this, station](const char *kind, std::uint32_t number, std::uint32_t value) {
        m_controller.write(station, kind, number, value);
    };
    const std::uint32_t wave = floatBits(sine(m_steps));
    set("D", 0, m_steps % RAMP_LENGTH);
    set("D", 1, static_cast<std::uint32_t>(std::lround(AMPLITUDE * sine(m_steps))));
    set("D", 2, wave);
    set("D", 3, wave >> 16U);
    set("C", 0, m_steps);
    set("32C", 200, m_steps);
    set("T", 0, m_steps % TIMER_LENGTH);
    set("T_Contact", 0, m_steps % TIMER_LENGTH == 0);
    for (unsigned bit = 0; bit < BLINKING_BITS; ++bit)
        set("M", bit, m_steps >> bit);
}

std::string animationList()
{
    return "  D0             ramp from 0 to 999\n"
           "  D1             sine from -1000 to 1000, 60 steps a turn\n"
           "  D2, D3         the same sine from -1 to 1, as a 32-bit float\n"
           "  C0, 32C200     count the steps\n"
           "  T0, T_Contact0 runs from 0 to 99; on for the step at which it is back at 0\n"
           "  M0 to M7       M0 toggles every step, each next one half as often\n";
}

} // namespace vssim
