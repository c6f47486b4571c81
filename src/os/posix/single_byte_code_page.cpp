#include <map>
#include <memory>
#include <mutex>

#include "os/posix/code_page_tables.h"

namespace nvk::os::posix {

SingleByteCodePage::SingleByteCodePage(const SingleByteTable& table) : toWide_{}, toByte_{} {
    for (std::size_t i = 0; i < table.bestFitCount; ++i) {
        toByte_[table.bestFit[i].character] = kBestFit | table.bestFit[i].byte;
    }
    for (int byte = 255; byte >= 0; --byte) {  // the lowest byte of a character wins
        const char16_t c = byte < 0x80 ? static_cast<char16_t>(byte) : table.high[byte - 0x80];
        toWide_[byte] = c;
        toByte_[c] = static_cast<std::uint16_t>(kExact | byte);
    }
}

const SingleByteCodePage* SingleByteCodePage::For(unsigned codePage) {
    static std::mutex lock;
    static auto* made = new std::map<unsigned, std::unique_ptr<SingleByteCodePage>>;
    std::lock_guard guard(lock);
    auto [it, added] = made->try_emplace(codePage);
    if (added) {
        if (const SingleByteTable* table = FindSingleByteTable(codePage)) {
            it->second.reset(new SingleByteCodePage(*table));
        }
    }
    return it->second.get();
}

}  // namespace nvk::os::posix
