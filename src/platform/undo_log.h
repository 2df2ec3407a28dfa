#pragma once

// The images of what a trial changes, as they stood before. One log serves a whole call, in the order of the
// changes, so that a level, or everything, can be put back however often the same object was changed.

#include <cstddef>
#include <cstring>
#include <type_traits>
#include <vector>

namespace surv {

class CUndoLog {
 public:
    /// A place in the log.
    struct Mark {
        std::size_t images = 0;
    };

    /// Keeps the figures as they are now, and gives the image, which is good until the next save.
    /// REQUIRES: the figures stay where they are until the log is cleared.
    template <class Figures>
    const Figures& Save(Figures& figures) {
        static_assert(std::is_trivially_copyable_v<Figures>, "plain figures only: children and links stay out");
        return *reinterpret_cast<const Figures*>(SaveBytes(&figures, sizeof(Figures)));
    }

    [[nodiscard]] Mark Here() const { return Mark{images_.size()}; }

    /// Puts back everything saved between the two marks, newest first. The images stay until Clear.
    void Restore(Mark from, Mark to) {
        for (std::size_t i = to.images; i > from.images; --i) {
            const Image& image = images_[i - 1];
            std::memcpy(image.object, bytes_.data() + image.at, image.size);
        }
    }

    /// Puts back one object alone, as it was at the first of the two marks; nothing if it wasn't saved between them.
    void RestoreObject(const void* object, Mark from, Mark to) {
        for (std::size_t i = from.images; i < to.images; ++i) {
            const Image& image = images_[i];
            if (image.object != object) continue;
            std::memcpy(image.object, bytes_.data() + image.at, image.size);
            return;
        }
    }

    /// Puts back everything saved since the mark, newest first, and forgets it.
    void RestoreBackTo(Mark mark) {
        Restore(mark, Here());
        if (images_.size() > mark.images) {
            bytes_.resize(images_[mark.images].at);
            images_.resize(mark.images);
        }
    }

    /// Forgets all images: the changes stand. Keeps its memory for the next call.
    void Clear() {
        images_.clear();
        bytes_.clear();
    }
    [[nodiscard]] bool Empty() const { return images_.empty(); }

 private:
    /// Images lie at multiples of 8, so that any plain struct may be read in place.
    const std::byte* SaveBytes(void* object, std::size_t size) {
        const std::size_t at = bytes_.size();
        const auto* from = static_cast<const std::byte*>(object);
        bytes_.insert(bytes_.end(), from, from + size);
        bytes_.resize(at + (size + 7) / 8 * 8);
        images_.push_back(Image{object, at, size});
        return bytes_.data() + at;
    }

    struct Image {
        void* object;
        std::size_t at;
        std::size_t size;
    };
    std::vector<Image> images_;
    std::vector<std::byte> bytes_;
};

/// Puts everything back that was saved since it was made, unless it is told to keep it.
class CUndoGuard {
 public:
    explicit CUndoGuard(CUndoLog& log) : log_(log), start_(log.Here()) {}
    CUndoGuard(const CUndoGuard&) = delete;
    CUndoGuard& operator=(const CUndoGuard&) = delete;
    ~CUndoGuard() {
        if (!kept_) log_.RestoreBackTo(start_);
    }
    void Keep() { kept_ = true; }

 private:
    CUndoLog& log_;
    CUndoLog::Mark start_;
    bool kept_ = false;
};

}  // namespace surv
