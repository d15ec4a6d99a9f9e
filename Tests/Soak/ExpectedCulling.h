#pragma once

#include <vector>

/// What a photo is marked as.
enum class Verdict { None, Approved, Rejected };

/// Where a user of the application must be after what was done, by its rules and apart from its code. Photos are numbered
/// from 0 as they lie in the folder.
class ExpectedCulling {
public:
    /// The folder has just been opened.
    explicit ExpectedCulling(int photos);

    int photo() const { return m_items[m_position].photo; }
    Verdict verdict() const { return m_items[m_position].verdict; }
    int count() const { return static_cast<int>(m_items.size()); } ///< of photos in the list
    bool canUndo() const { return !m_marks.empty(); }

    void walk(int steps);       ///< to the right, negative: to the left; round at the ends
    void mark(Verdict verdict); ///< or takes that verdict back
    void undo();                ///< there is a mark to take back

    /// The photos with that verdict.
    std::vector<int> photosWith(Verdict verdict) const;

    /// Moves them out of the list. There is one left.
    void move(Verdict verdict);

private:
    struct Item {
        int photo;
        Verdict verdict;
    };
    struct Mark {
        int position;
        Verdict before;
    };

    std::vector<Item> m_items;
    std::vector<Mark> m_marks;
    int m_position = 0;
};
