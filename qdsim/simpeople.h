#pragma once

#include "simtypes.h"

#include <random>

/// @brief Plausible people, companies and numbers; the same seed gives the same ones on every machine.
class SimPeople
{
public:
    explicit SimPeople(quint32 seed)
        : m_random(seed)
    {}

    SimPerson person();  ///< without address and user name
    QString groupName(); ///< like the name of a department
    QString faxNumber();
    /// A uniformly distributed number from 0 to below @p count; 0 if that is empty.
    int below(int count);

private:
    std::mt19937 m_random; // the standard defines its output, unlike that of the distributions
};
