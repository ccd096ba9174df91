-- The pages of the guide become one: links from one to another lead to a heading of the same page.
function Link(link)
    link.target = link.target:gsub("^[%w-]+%.md#", "#")
    if link.target == "operating.md" then
        link.target = "#running-it-for-months"
    elseif link.target == "user-guide.md" then
        link.target = "#what-it-does-and-what-it-does-not"
    end
    return link
end
