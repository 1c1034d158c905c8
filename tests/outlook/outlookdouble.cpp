// The double of Outlook in a process of its own: a mailbox, served by COM until a line is read or the input
// ends. Then a line says whether everything has been released.
//
// Usage: outlookdouble CONTACTS [(busy | dies | waits) MEMBER CALL]

#include "outlookworld.h"

#include <QCoreApplication>

#include <cstdio>
#include <iostream>
#include <thread>

namespace {

DWORD cookie = 0;

void say(const char* line)
{
    std::puts(line);
    std::fflush(stdout);
}

ComFault faultOf(const QByteArray& what, const char* member, int call)
{
    return {member,
            [what](VARIANT&, EXCEPINFO&) {
                if (what == "dies") {
                    CoRevokeClassObject(cookie); // Wine 8 would keep it for good
                    TerminateProcess(GetCurrentProcess(), 3);
                }
                if (what == "waits") {
                    say("serving");
                    Sleep(500);
                }
                return what == "busy" ? RPC_E_CALL_REJECTED : E_FAIL;
            },
            call, call};
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    FakeMailbox mailbox;
    fill(mailbox, argc > 1 ? std::atoi(argv[1]) : 0);
    CoInitialize(nullptr);
    mailbox.outlook->enterThread();
    ComOutlookDouble com(*mailbox.outlook);
    if (argc > 4)
        com.setFaults({faultOf(argv[2], argv[3], std::atoi(argv[4]))});
    cookie = com.registerClass(CLSCTX_LOCAL_SERVER);
    std::thread input([&application] {
        std::cin.get();
        QMetaObject::invokeMethod(&application, &QCoreApplication::quit);
    });
    say("ready");
    QCoreApplication::exec();
    input.join();
    CoRevokeClassObject(cookie);
    mailbox.outlook->leaveThread();
    CoUninitialize();
    const bool isClean =
        com.objects == 0 && com.violations == 0 && com.listeners == 0 && mailbox.outlook->isBalanced();
    std::printf("%d objects, %d uses on wrong threads, %d listeners, %d calls\n", int(com.objects),
                int(com.violations), int(com.listeners), int(com.calls));
    return isClean ? 0 : 1;
}
