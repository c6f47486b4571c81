#include "nvk/context/locale.h"

#include "nvk/context/loc.h"
#include "os/api/locale.h"

namespace {

std::uint32_t Resolve(std::uint32_t lcid) {
    switch (lcid) {
        case ELocale::kUserDefault:
            return nvk::os::GetUserDefaultLCID();
        case ELocale::kSystemDefault:
            return nvk::os::GetSystemDefaultLCID();
        case ELocale::kThread:
            return ELoc::Get().GetThreadLCID();
        default:
            return nvk::os::ConvertDefaultLocale(lcid);
    }
}

}  // namespace

ELocale::ELocale(std::uint32_t lcid) : Lcid(Resolve(lcid)), m_Cache(CacheFor(Lcid)) {}
