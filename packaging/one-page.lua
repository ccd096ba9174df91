-- The pages of the guide become one: links from one to another lead to a heading of the same page.
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
