#pragma once

#include <linux/capability.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace orx_test {

// Takes the privilege of reading everything away from this process, which may be root's.
class NoPrivilege {
 public:
  NoPrivilege() {
    syscall(SYS_capget, &header_, before_);
    __user_cap_data_struct without[2] = {before_[0], before_[1]};
    without[0].effective &= ~(1u << CAP_DAC_OVERRIDE | 1u << CAP_DAC_READ_SEARCH);
    syscall(SYS_capset, &header_, without);
  }
  ~NoPrivilege() { syscall(SYS_capset, &header_, before_); }
  NoPrivilege(const NoPrivilege&) = delete;
  NoPrivilege& operator=(const NoPrivilege&) = delete;

 private:
  __user_cap_header_struct header_ = {_LINUX_CAPABILITY_VERSION_3, 0};
  __user_cap_data_struct before_[2] = {};
};

}  // namespace orx_test
