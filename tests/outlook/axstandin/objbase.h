#pragma once

// The two functions of COM that the library calls, counted; see QAxObject beside this file.

using HRESULT = int;

struct ComCalls
{
    int initialized{0};
    int uninitialized{0};
    HRESULT answer{0};

    static ComCalls& inst()
    {
        static ComCalls calls;
        return calls;
    }
};

inline bool SUCCEEDED(HRESULT result)
{
    return result >= 0;
}

inline HRESULT CoInitialize(void*)
{
    ++ComCalls::inst().initialized;
    return ComCalls::inst().answer;
}

inline void CoUninitialize()
{
    ++ComCalls::inst().uninitialized;
}
