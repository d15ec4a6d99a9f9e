// Walking through the photos and marking them.
#include "Vantrel/CullingViewModel.h"

#include <algorithm>

namespace {

int countIn(const std::vector<PhotoItem>& items, ReviewState state) {
    return static_cast<int>(std::ranges::count(items, state, &PhotoItem::state));
}

} // namespace

void CullingViewModel::nextPhoto() {
    if (m_photoItems.empty()) {
        return;
    }
    const int next = m_currentIndex + 1;
    navigateTo(next >= photoCount() ? 0 : next);
}

void CullingViewModel::previousPhoto() {
    if (m_photoItems.empty()) {
        return;
    }
    const int previous = m_currentIndex - 1;
    navigateTo(previous < 0 ? photoCount() - 1 : previous);
}

void CullingViewModel::cycleState() {
    markCurrent(ReviewState::rejected);
}

void CullingViewModel::toggleApproved() {
    markCurrent(ReviewState::approved);
}

void CullingViewModel::markCurrent(ReviewState mark) {
    if (!isPosition(m_currentIndex)) {
        return;
    }
    const ReviewState old = currentState();
    m_undoStack.push_back({m_currentIndex, old});
    emit undoStackChanged();
    setState(m_currentIndex, old == mark ? ReviewState::unreviewed : mark);
}

void CullingViewModel::undo() {
    if (m_undoStack.empty()) {
        return;
    }
    const UndoEntry entry = m_undoStack.back();
    m_undoStack.pop_back();
    emit undoStackChanged();
    if (!isPosition(entry.index)) {
        return;
    }
    setState(entry.index, entry.previousState);
    navigateTo(entry.index);
}

int CullingViewModel::approvedCount() const {
    return countIn(m_photoItems, ReviewState::approved);
}

int CullingViewModel::rejectedCount() const {
    return countIn(m_photoItems, ReviewState::rejected);
}
