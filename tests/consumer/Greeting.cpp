// SPDX-License-Identifier: MIT
#include "Greeting.h"

#include <stdexcept>

Greeting::Greeting() {
    if (!NSNib("Greeting").instantiateNibWithOwner(*this) || !m_window || !m_button) {
        throw std::runtime_error("the nib");
    }
}

void Greeting::connectNib(NSNibConnections& nib) {
    nib.outlet("window", m_window);
    nib.outlet("button", m_button);
    nib.action("greet:", [this](QObject*) { ++m_timesGreeted; });
}
