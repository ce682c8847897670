#pragma once

#include <memory>
#include <vector>

class GroupView;
class ImageController;
class Node;

// The floating image windows of one image view, at most one per node. A window that the user
// closes is only hidden, so the next zoom shows it again where it was left; every window shows
// each new picture of its node as it arrives, whether or not the node is selected.
class ImageWindowRegistry {
public:
    explicit ImageWindowRegistry(GroupView *view);
    ~ImageWindowRegistry();
    ImageWindowRegistry(const ImageWindowRegistry &) = delete;
    ImageWindowRegistry &operator=(const ImageWindowRegistry &) = delete;

    // Opens the node's window, or brings the open one to the front with the picture reloaded.
    // A node without data, or whose file is not an image, opens nothing.
    void openImageWindowForNode(Node *node);
    ImageController *imageWindowForNode(const Node *node) const;
    // Shows the node's new picture in its window, if it has one, without bringing it forward.
    void updateImageWindowForNode(Node *node);
    void destroyAllImageWindows();
    void imageWindowDidExit(ImageController *controller);
    int count() const { return int(_imageWindows.size()); }

private:
    GroupView *_view;
    std::vector<std::unique_ptr<ImageController>> _imageWindows;
};
