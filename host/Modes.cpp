// The sharing mode and the certification state: plain settings.
#include <atomic>

#include "Platform/CameraPlatform.h"
#include "host/HostPlatform.h"

namespace {

std::atomic<int> sharingMode{0};
std::atomic<int> certificationState{0};

}  // namespace

void HostPlatform::SetSharingMode(int mode) { sharingMode = mode; }
void HostPlatform::SetCertificationState(int state) { certificationState = state; }

int GetTandemixMode(void) { return sharingMode; }
int ORXGetDlnaCertificationState(void) { return certificationState; }
