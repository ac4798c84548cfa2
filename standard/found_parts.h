#pragma once

#include "standard/part_tree.h"

#include <string>
#include <utility>
#include <vector>

namespace standard {

/** Goes through the parts of a message, and collects the text to be shown and the attachments. */
class FoundParts {
  public:
    /** Takes a message's parts in their order. */
    void take(const Part& message) { take(message, Wanted::TextAndAttachments); }

    /** Adds text below what is there, with an empty line between. */
    void addText(std::string text);

    std::string takeText() { return std::move(text_); }

    std::vector<StandardAttachment> takeAttachments() { return std::move(attachments_); }

  private:
    /** What is wanted of a part; of one that stands beside a better one only the attachments are. */
    enum class Wanted { TextAndAttachments, Attachments };

    void take(const Part& part, Wanted wanted);
    void takeMultipart(const Part& part, Wanted wanted);
    void takeAlternatives(const Part& part, Wanted wanted);
    void takeRelated(const Part& part, Wanted wanted);
    void takeEncrypted(const Part& part);
    void takeText(const Entity& part, Wanted wanted);
    void takeInvitation(const Entity& part);
    void attach(const Entity& part);

    std::string text_;
    std::vector<StandardAttachment> attachments_;
    /** The invitations that the text holds; many messages bring the same one twice. */
    std::vector<std::string> invitations_;
};

} // namespace standard
