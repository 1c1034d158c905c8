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
    QString groupName(); ///< as a department might be called
    QString faxNumber();
    /// An even choice from 0 to below @p count; 0 for an empty choice.
    int below(int count);

private:
    std::mt19937 m_random; // its output is fixed by the language; the library's distributions are not
};
