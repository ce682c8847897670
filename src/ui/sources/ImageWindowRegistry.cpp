#include "ui/sources/ImageWindowRegistry.h"

#include "core/sources/Node.h"
#include "ui/sources/ImageController.h"

#include <algorithm>

ImageWindowRegistry::ImageWindowRegistry(GroupView *view) : _view(view) {}

ImageWindowRegistry::~ImageWindowRegistry() = default;

void ImageWindowRegistry::openImageWindowForNode(Node *node)
{
    if (!node->fileDownloaded())
        return;
    if (ImageController *existing = imageWindowForNode(node)) {
        existing->updateWithOpen(true);
        return;
    }
    std::unique_ptr<ImageController> controller = ImageController::create(
        node->filePath(), node->itemName(), node->dataSource(), node, _view);
    if (controller)
        _imageWindows.push_back(std::move(controller));
}

ImageController *ImageWindowRegistry::imageWindowForNode(const Node *node) const
{
    for (const auto &controller : _imageWindows) {
        if (controller->node() == node)
            return controller.get();
    }
    return nullptr;
}

void ImageWindowRegistry::updateImageWindowForNode(Node *node)
{
    if (!node->fileDownloaded())
        return;
    if (ImageController *controller = imageWindowForNode(node))
        controller->updateWithOpen(false);
}

void ImageWindowRegistry::destroyAllImageWindows()
{
    _imageWindows.clear();
}

void ImageWindowRegistry::imageWindowDidExit(ImageController *controller)
{
    const auto it = std::find_if(_imageWindows.begin(), _imageWindows.end(),
                                 [controller](const auto &c) { return c.get() == controller; });
    if (it != _imageWindows.end())
        _imageWindows.erase(it);
}
