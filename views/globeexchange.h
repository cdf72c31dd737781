// Hands finished globe scenes from the core thread to the renderer without
// either waiting on the other: three scenes in turn, the writer filling one,
// the reader drawing another, the newest finished one in between. Only the
// swap of two indices happens under the lock; nothing is allocated once the
// scenes have grown to their working size.
#pragma once

#include <mutex>
#include <utility>

#include "views/globescene.h"

namespace veloran {

class GlobeSceneExchange {
  public:
    // The scene the writer may fill now.
    GlobeScene* back() { return &scenes_[back_]; }
    // The filled back scene becomes the newest; the writer gets the older one.
    void publish() {
        std::lock_guard<std::mutex> lock(mutex_);
        std::swap(back_, ready_);
        fresh_ = true;
    }
    // The newest published scene, kept for the reader until a newer one
    // comes; null before the first.
    const GlobeScene* take() {
        std::lock_guard<std::mutex> lock(mutex_);
        if (fresh_) {
            std::swap(front_, ready_);
            fresh_ = false;
            any_ = true;
        }
        return any_ ? &scenes_[front_] : nullptr;
    }

  private:
    GlobeScene scenes_[3];
    std::mutex mutex_;
    int back_ = 0, ready_ = 1, front_ = 2;
    bool fresh_ = false, any_ = false;
};

}  // namespace veloran
