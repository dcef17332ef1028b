/// Values that move by themselves, so that there is something to see. One step after another; the caller has the clock.
#ifndef VSSIM_ANIMATION_H
#define VSSIM_ANIMATION_H

#include "simulator/controller.h"

namespace vssim {

class Animation {
public:
    /// `animated` must outlive the animation.
    explicit Animation(Controller &animated) : m_controller(animated) {}

    /// The next values, in every station.
    void step();

private:
    void stepStation(std::uint8_t station);

    Controller &m_controller;
    std::uint32_t m_steps = 0;
};

/// Which values move and how, a line each, for help texts.
std::string animationList();

} // namespace vssim

#endif
