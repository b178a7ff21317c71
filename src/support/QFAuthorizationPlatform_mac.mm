#include "QFAuthorizationPlatform.h"

#include <Security/Authorization.h>

#include <cstdio>
#include <vector>

namespace QFAuthorizationPlatform {

void setRunner(const QString &) {}

bool obtainRights(void **handle)
{
    AuthorizationRef ref = nullptr;
    if (AuthorizationCreate(nullptr, kAuthorizationEmptyEnvironment,
                            kAuthorizationFlagDefaults, &ref) != errAuthorizationSuccess)
        return false;
    AuthorizationItem right = {"system.privilege.admin", 0, nullptr, 0};
    AuthorizationRights rights = {1, &right};
    const AuthorizationFlags flags = kAuthorizationFlagDefaults | kAuthorizationFlagInteractionAllowed |
                                     kAuthorizationFlagExtendRights | kAuthorizationFlagPreAuthorize;
    if (AuthorizationCopyRights(ref, &rights, nullptr, flags, nullptr) != errAuthorizationSuccess) {
        AuthorizationFree(ref, kAuthorizationFlagDefaults);
        return false;
    }
    *handle = ref;
    return true;
}

void releaseRights(void *handle)
{
    if (handle)
        AuthorizationFree(static_cast<AuthorizationRef>(handle), kAuthorizationFlagDefaults);
}

int runWithRights(void *handle, const QString &tool, const QStringList &arguments, bool wait)
{
    std::vector<QByteArray> store;
    for (const QString &argument : arguments)
        store.push_back(argument.toUtf8());
    std::vector<char *> argv;
    for (QByteArray &argument : store)
        argv.push_back(argument.data());
    argv.push_back(nullptr);
    FILE *pipe = nullptr;
#pragma clang diagnostic push
#pragma clang diagnostic ignored "-Wdeprecated-declarations"
    const OSStatus status = AuthorizationExecuteWithPrivileges(
        static_cast<AuthorizationRef>(handle), tool.toUtf8().constData(), kAuthorizationFlagDefaults,
        argv.data(), wait ? &pipe : nullptr);
#pragma clang diagnostic pop
    if (status == errAuthorizationSuccess && pipe) {
        // The tool has finished when its output channel ends.
        char buffer[1024];
        while (std::fread(buffer, 1, sizeof buffer, pipe) > 0) {
        }
        std::fclose(pipe);
    }
    return int(status);
}

bool isRefusal(int status)
{
    return status == errAuthorizationCanceled || status == errAuthorizationDenied ||
           status == errAuthorizationInteractionNotAllowed;
}

} // namespace QFAuthorizationPlatform
