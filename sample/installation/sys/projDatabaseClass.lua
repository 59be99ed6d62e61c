-- The databases of a project, by the class of their records.
return { component = "spec", attribute = "attr", support = "support", drawing = "glib" }
