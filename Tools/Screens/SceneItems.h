#pragma once

#include <QQuickItem>
#include <QQuickWindow>

#include <vector>

/// An item in the window's scene, visible or not, that the predicate holds for; nullptr where there is none. Main thread.
template <typename Predicate>
QQuickItem* firstItem(const QQuickWindow& window, Predicate isWanted) {
    std::vector<QQuickItem*> open{window.contentItem()};
    while (!open.empty()) {
        QQuickItem* candidate = open.back();
        open.pop_back();
        if (isWanted(*candidate)) {
            return candidate;
        }
        const auto children = candidate->childItems();
        open.insert(open.end(), children.begin(), children.end());
    }
    return nullptr;
}
