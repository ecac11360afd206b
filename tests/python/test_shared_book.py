import meridex


def test_two_objects_saving_one_book_keep_both_groups(tmp_path):
    path = str(tmp_path / "AddressBook.xml")
    empty = meridex.AddressBook()
    empty.LoadAddressBook(path)
    empty.SaveAddressBook()
    first, second = meridex.AddressBook(), meridex.AddressBook()
    first.LoadAddressBook(path)
    second.LoadAddressBook(path)
    for book, name in ((first, "North"), (second, "South")):
        group = meridex.SiteGroup()
        group.Name = name
        book.Sites.AddGroup(group)
        book.SaveAddressBook()
        assert book.ConflictCopy == ""
    assert [g.Name for g in second.Sites.Groups] == ["North", "South"]
    saved = meridex.AddressBook()
    saved.LoadAddressBook(path)
    assert sorted(g.Name for g in saved.Sites.Groups) == ["North", "South"]
