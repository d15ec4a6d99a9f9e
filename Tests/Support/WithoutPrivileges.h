#pragma once

#include <linux/capability.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>

/// Lets the permissions of files count for the calling thread until the end of the scope, which they do not for root otherwise.
/// Changes nothing for other users.
class WithoutPrivileges {
public:
    WithoutPrivileges() {
        syscall(SYS_capget, &m_header, m_before.data());
        auto now = m_before;
        now[0].effective &= ~(1U << CAP_DAC_OVERRIDE | 1U << CAP_DAC_READ_SEARCH);
        syscall(SYS_capset, &m_header, now.data());
    }
    ~WithoutPrivileges() { syscall(SYS_capset, &m_header, m_before.data()); }
    WithoutPrivileges(const WithoutPrivileges&) = delete;
    WithoutPrivileges& operator=(const WithoutPrivileges&) = delete;

private:
    __user_cap_header_struct m_header{_LINUX_CAPABILITY_VERSION_3, 0};
    std::array<__user_cap_data_struct, _LINUX_CAPABILITY_U32S_3> m_before{};
};
