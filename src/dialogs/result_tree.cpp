#include "dialogs/result_tree.h"

namespace quorvex::dialogs {

std::vector<ResultNode> ReadResultTree(const std::function<lookups::AdvancedLine()>& nextLine, std::int32_t recordCount,
                                       int& headingCounter) {
    std::vector<ResultNode> nodes;
    int heading = -1;
    for (lookups::AdvancedLine line = nextLine(); !line.text.empty(); line = nextLine()) {
        ResultNode node;
        node.heading = line.lineType == L"h";
        if (node.heading) {
            node.key = L"k" + std::to_wstring(++headingCounter);
            node.expanded = recordCount < kCollapseFromRecords;
            heading = static_cast<int>(nodes.size());
        } else {
            node.key = line.id;
            node.parent = heading;
        }
        node.text = std::move(line.text);
        nodes.push_back(std::move(node));
    }
    return nodes;
}

} // namespace quorvex::dialogs
