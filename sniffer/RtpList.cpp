#include "RtpList.h"

RtpList::RtpList() {
    reset(initialSlots);
}

void RtpList::reset(std::size_t slotCount) {
    slots.assign(slotCount, Slot{emptyKey, 0});
    mask = slotCount - 1;
    shift = 64;
    for (std::size_t n = slotCount; n > 1; n >>= 1)
        --shift;
    used = 0;
}

// The slot holding `k`, or the empty slot where it would go.
std::size_t RtpList::find(uint64_t k) const {
    std::size_t i = home(k);
    while (slots[i].key != k && slots[i].key != emptyKey)
        i = (i + 1) & mask;
    return i;
}

void RtpList::add(const RtpAddr& a) {
    const uint64_t k = key(a);
    std::size_t i = find(k);
    if (slots[i].key == emptyKey) {
        // At most half full, so that probe runs stay short.
        if (2 * (used + 1) > slots.size()) {
            grow();
            i = find(k);
        }
        slots[i].key = k;
        ++used;
    }
    ++slots[i].count;
}

void RtpList::remove(const RtpAddr& a) {
    std::size_t hole = find(key(a));
    if (slots[hole].key == emptyKey)
        return;
    --used;
    // Backward-shift deletion: move up every later entry of the probe run
    // whose home does not lie between the hole and its own slot.
    for (std::size_t i = (hole + 1) & mask; slots[i].key != emptyKey; i = (i + 1) & mask) {
        const std::size_t h = home(slots[i].key);
        const bool staysPut = hole <= i ? (hole < h && h <= i) : (hole < h || h <= i);
        if (staysPut)
            continue;
        slots[hole] = slots[i];
        hole = i;
    }
    slots[hole] = Slot{emptyKey, 0};
}

unsigned RtpList::count(const RtpAddr& a) const {
    return slots[find(key(a))].count;
}

void RtpList::clear() {
    reset(initialSlots);
}

void RtpList::grow() {
    std::vector<Slot> old;
    old.swap(slots);
    const std::size_t entries = used;
    reset(old.size() * 2);
    for (const Slot& s : old) {
        if (s.key == emptyKey)
            continue;
        slots[find(s.key)] = s;
    }
    used = entries;
}
