<!--- A template; don't read <cfset x = "in"> here --->
<cfcomponent output="no"><cfargument name="id" type="numeric" required = yes>
<cfset total = 0><cfset name = "O'Brien"><cfset quoted = 'say "hi"'>
<cfparam name="url.page" default="#request.page#">
<CFQUERY name="orders" datasource="#application.dsn#" maxrows=10>
    SELECT id FROM orders WHERE total > #total# AND name = '#name#'
</CFQUERY>
<cfif orders.recordCount GT 0 AND form.name EQ "a ""b"" c">
    <cfoutput query="orders" group="id">#orders.id#: <b>#dollarFormat(total)#</b></cfoutput>
<cfelseif NOT isDefined("url.x")><cfinclude template="a#url.page#b.cfm">
<cfelse><cf_custom attribute="it's #name# here"><cfunknown/>
</cfif>
<cfscript>
    // a comment: don't stop
    total = 5 + 0x1F; if (total > 1) { name = "it's #total# \"raised\""; }
    for (i = 1; i < 5; i = i + 1) writeOutput('x #i# y');
</cfscript>
<cfloop from=1 to=#total# index="i"><a href="page.cfm?id=#i#&amp;n=#urlEncode#" id=x>#i#</a></cfloop>
<script>var id = #id#, text = "total: #total#, \"raised\""; // it's #done#
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
</cfcomponent>
