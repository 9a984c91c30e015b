// Runs a command with as few rights as ordinary containers give: no mounts and no new namespaces.
// SPDX-License-Identifier: MIT
//
//     plain_container COMMAND [ARGUMENT...]
//
// The exit status is the command's, 2 when the rights cannot be dropped, 127 when there is no such command.
#include <cerrno>
#include <cstdio>
#include <initializer_list>

#include <linux/capability.h>
#include <sched.h>
#include <seccomp.h>
#include <sys/prctl.h>
#include <unistd.h>

namespace {

bool refuse(scmp_filter_ctx filter, int call, int error)
{
    return seccomp_rule_add(filter, SCMP_ACT_ERRNO(static_cast<unsigned>(error)), call, 0) == 0;
}

/// clone() with that flag.
bool refuseClone(scmp_filter_ctx filter, unsigned flag)
{
    return seccomp_rule_add(filter, SCMP_ACT_ERRNO(EPERM), SCMP_SYS(clone), 1,
                            SCMP_A0(SCMP_CMP_MASKED_EQ, flag, flag)) == 0;
}

bool takeRightsAway()
{
    prctl(PR_CAPBSET_DROP, CAP_SYS_ADMIN, 0, 0, 0); // fails for ordinary users, who never had it
    const scmp_filter_ctx filter = seccomp_init(SCMP_ACT_ALLOW);
    if (!filter)
        return false;
    for (const int call : {SCMP_SYS(mount), SCMP_SYS(umount2), SCMP_SYS(pivot_root), SCMP_SYS(unshare),
                           SCMP_SYS(setns), SCMP_SYS(fsopen), SCMP_SYS(open_tree), SCMP_SYS(move_mount)})
        if (!refuse(filter, call, EPERM))
            return false;
    // Its flags are in memory, which a filter cannot see; without it the C library uses clone().
    return refuse(filter, SCMP_SYS(clone3), ENOSYS) && refuseClone(filter, CLONE_NEWUSER) &&
           refuseClone(filter, CLONE_NEWNS) && seccomp_load(filter) == 0;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc < 2) {
        std::fprintf(stderr, "usage: plain_container COMMAND [ARGUMENT...]\n");
        return 2;
    }
    if (!takeRightsAway()) {
        std::perror("plain_container");
        return 2;
    }
    execvp(argv[1], argv + 1);
    std::perror(argv[1]);
    return 127;
}
