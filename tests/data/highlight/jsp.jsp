<%-- A hidden comment: don't read <%= "this" %>
     nor "this" --%>
<%@ page language="java" import="java.util.*,
    java.io.*" errorPage='error.jsp' %>
<%@ taglib uri="/WEB-INF/x.tld" prefix="x" %>
<%!
    private static final String QUOTE = "\"", PATH = "C:\\"; // don't stop
    private int count = 0x1F, mode = 0644; /* over
    two lines, it's %> no */ char c = '\'', d = '"';
    double rate = 1.5e3 + .5 + 2f; long big = 42L; boolean open = true;
%>
<%
    String name = request.getParameter("name"); // ends here %><b>text</b>
<% for (int i = 0; i < 5 && name != null; i++) { %>
    <li><%= name + " it's %" + i % 2 %></li>
<% } // closed %>
<%
    String open = "never closed;
    int next = 1; /**/ byte[] b = new byte[]{1, 'x'}; name = null;
    try { out.println("<b>" + '\n'); } catch (IOException e) { throw new RuntimeException(e); }
%>
<a href="<%= url + "?id=" + id %>" title='<%= "it's" %>' class="x <% if (a) { %>y<% } %>">z</a>
<jsp:useBean id="bean" class="org.example.Bean" scope="page"/>
<x:out value="${bean.name}"/><c:if test="${a > b}">text</c:if>
<script>var id = <%= id %>, name = "<%= name %>"; // don't
var s = 'it\'s';
</script>
<!DOCTYPE html PUBLIC "-//W3C//DTD HTML 4.01//EN"
  "http://www.w3.org/TR/html4/strict.dtd">
<!-- A comment with <b>tags</b>, "quotes" and it's
     several lines; -- two dashes don't close it
     <script> opens nothing -->
<html lang="en">
<head>
<title>Orders &amp; prices &lt; 100 &#8364; &nbsp; AT&T; R&D & more</title>
<link rel=stylesheet href=/style.css>
<script type="text/javascript" src="a.js"></script>
<SCRIPT LANGUAGE="JavaScript">
// don't read "quotes" in here
/* a comment
   it's over here: </b> */ var after = 1;
var text = "it's <b>no tag</b> // no comment", other = 'say "hi" /* text */';
var escaped = "a \"quoted\" one \\", apostrophe = 'it\'s', empty = "" + '';
var number = 0x1F + 017 + 42 + .5 + 1. + 1.5e-3 + 2E10;
var long = "begins here \
and ends here";
var re = /["']/g, half = number / 2 / 3, found = text.match(/it's \/ "x/i); // 'done'
function show(node, on) {
    if (node == null || !on && true) return false;
    for (var i = 0; i < node.length; i++) { switch (i) { case 0: break; default: continue; } }
    try { node.style["color"] = on ? 'red' : "blue"; } catch (e) { throw new Error("bad"); }
    return typeof node in this; /**/
}
var open = "never closed
var next = 1; // </script in a comment
var last = 'never closed
</SCRIPT>
<style>p > a { color: red; content: "it's"; }</style>
</head>
<body bgcolor="#ffffff" onload='show("all", 1)' text=black link>
<h1 class="big red">Title</h1><!-- short --><p>Don't "quote" me.</p>
<a href="http://example.org/?a=1&amp;b=2" title="a > b" target='_top'>It's <b>bold</b>, <i>italic</i></a>
<img src="a.png" alt="two
lines" width=10 height = "20"/><br/>
<table border=1><tr><td align = center nowrap>1</td><td><unknown x="y">2</unknown></td></tr></table>
<input value="it's" name='say "hi"' disabled><hr size=1 / >
<p
   id="spread"
   class=it's-odd
>Text < 5 and > 3, a<b and c>d, <> <3 </ p>
<my-element data-x="1"/><svg:rect x='1'></svg:rect>
<COMMENT>An old comment: <b>text</b>
 it's closed here</COMMENT> and text
<comment>short</comment><script>/* short */ x = "</b>"; // it's over</script><b>bold</b>
<a href="never closed>text</a>
"> closed here
<ul><li>one<li>two</ul>&unclosed entity
<% int open = 1; /* never closed
 int still = 1; %>
