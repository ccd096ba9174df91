-- Turns links between the guide's pages into links to headings, since all pages become one.
function Link(link)
    link.target = link.target:gsub("^[%w-]+%.md#", "#")
    local first = {
        ["user-guide.md"] = "#quillmont-pro-user-guide",
        ["installing.md"] = "#installing-and-removing",
        ["operating.md"] = "#running-it-for-months",
    }
    link.target = first[link.target] or link.target
    return link
end
