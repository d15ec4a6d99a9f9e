#include "Tests/Soak/ExpectedCulling.h"

#include <algorithm>

ExpectedCulling::ExpectedCulling(int photos) {
    for (int photo = 0; photo < photos; ++photo) {
        m_items.push_back({photo, Verdict::None});
    }
}

void ExpectedCulling::walk(int steps) {
    m_position = ((m_position + steps) % count() + count()) % count();
}

void ExpectedCulling::mark(Verdict verdict) {
    Item& item = m_items[m_position];
    m_marks.push_back({m_position, item.verdict});
    item.verdict = item.verdict == verdict ? Verdict::None : verdict;
}

void ExpectedCulling::undo() {
    const Mark mark = m_marks.back();
    m_marks.pop_back();
    m_position = mark.position;
    m_items[m_position].verdict = mark.before;
}

std::vector<int> ExpectedCulling::photosWith(Verdict verdict) const {
    std::vector<int> photos;
    for (const Item& item : m_items) {
        if (item.verdict == verdict) {
            photos.push_back(item.photo);
        }
    }
    return photos;
}

void ExpectedCulling::move(Verdict verdict) {
    std::erase_if(m_items, [&](const Item& item) { return item.verdict == verdict; });
    m_marks.clear();
    m_position = std::min(m_position, count() - 1);
}
