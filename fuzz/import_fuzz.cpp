// The importers: the first byte chooses the file's kind, what stands behind a zero byte is its master.

#include <sys/mman.h>
#include <unistd.h>

#include <array>
#include <sstream>
#include <string>

#include "bhavcopy.h"
#include "contract_master.h"
#include "import_margins.h"
#include "import_span.h"
#include "input.h"

namespace {

/// A file that lies in memory.
class CMemoryFile {
 public:
    explicit CMemoryFile(std::string_view text) : descriptor_(::memfd_create("import", 0)) {
        while (!text.empty()) {
            const ssize_t written = ::write(descriptor_, text.data(), text.size());
            if (written <= 0) break;
            text.remove_prefix(static_cast<std::size_t>(written));
        }
    }
    ~CMemoryFile() { ::close(descriptor_); }
    CMemoryFile(const CMemoryFile&) = delete;
    CMemoryFile& operator=(const CMemoryFile&) = delete;

    [[nodiscard]] std::string Name() const { return "/proc/self/fd/" + std::to_string(descriptor_); }

 private:
    int descriptor_;
};

using Importer = std::string (*)(const survhost::ImportOptions&, std::ostream&);
constexpr std::array<Importer, 6> kImporters{
    &survhost::ImportSpan,       &survhost::ImportVarMargins, &survhost::ImportExposureMargins,
    &survhost::ImportMcxMargins, &survhost::ImportBhavcopy,   &survhost::ImportMaster};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::CInput input(data, size);
    const Importer import = kImporters[input.Byte() % kImporters.size()];
    const std::string_view text = input.Rest();
    const std::size_t end = text.find('\0');
    const CMemoryFile file(text.substr(0, end));
    const CMemoryFile master(end == std::string_view::npos ? std::string_view{} : text.substr(end + 1));
    survhost::ImportOptions options{.file = file.Name()};
    if (end != std::string_view::npos) options.master = options.closes = master.Name();
    std::ostringstream notes;
    try {
        static_cast<void>(import(options, notes));
    } catch (const survhost::RunError&) {
    }
    return 0;
}
