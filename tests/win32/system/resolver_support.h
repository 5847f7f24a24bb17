// A system that answers questions about hosts when it is told to, and not before.
#pragma once

namespace tk::test {

/// While one exists, questions wait; at its end they are answered.
class SilentSystem {
public:
    SilentSystem();
    SilentSystem(const SilentSystem&) = delete;
    SilentSystem& operator=(const SilentSystem&) = delete;
    ~SilentSystem();

    /// Answers open questions and all later ones with this h_errno.
    void Answer(int error) const;
    int Questions() const;
    /// @return whether there were that many within ten seconds
    bool WaitForQuestions(int count) const;
    /// @return whether no question was open any more within ten seconds
    bool WaitForIdle() const;
};

}  // namespace tk::test
